// Opening and closing the registry.
#include "registry_store.h"

#include "device_database.h"
#include "open_key.h"

namespace platform::registry {

bool openRegistry(const std::filesystem::path& database, std::string& error)
{
    return database::openDeviceDatabase(database, error);
}

void closeRegistry()
{
    kernel::removeHandlesIf(
        [](const kernel::Object& object) { return dynamic_cast<const OpenKey*>(&object) != nullptr; });
    database::closeDeviceDatabase();
}

}  // namespace platform::registry
