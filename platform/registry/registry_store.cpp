#include "registry/registry_store.h"

#include "database/device_database.h"
#include "kernel/entry_points.h"
#include "open_key.h"
#include "staged_registry.h"

#include "ce/registry_file.h"

namespace platform::registry {

bool openRegistry(const std::filesystem::path& database, std::string& sentence)
{
    if (!database::openDeviceDatabase(database, sentence))
        return false;
    const std::filesystem::path folder = std::filesystem::absolute(database).parent_path();
    std::string ofStaged;
    const bool enforced = enforceStagedRegistry(folder, ofStaged);
    if (!ofStaged.empty())
        sentence += (sentence.empty() ? "" : " ") + ofStaged;
    if (!enforced) {
        database::closeDeviceDatabase();
        return false;
    }
    setStagingFolder(folder);
    kernel::registerEntryPoint(u"RegCopyFile", reinterpret_cast<FARPROC>(&RegCopyFile));
    kernel::registerEntryPoint(u"RegRestoreFile", reinterpret_cast<FARPROC>(&RegRestoreFile));
    return true;
}

void closeRegistry()
{
    kernel::removeHandlesIf(
        [](const kernel::Object& object) { return dynamic_cast<const OpenKey*>(&object) != nullptr; });
    setStagingFolder({});
    database::closeDeviceDatabase();
}

}  // namespace platform::registry
