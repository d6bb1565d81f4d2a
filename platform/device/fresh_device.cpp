// Finds out whether a folder is a device, empty or something else, and turns an empty folder into a device.
#include "fresh_device.h"

#include "demonstration.h"
#include "device/changing_copy.h"
#include "host/descriptor.h"
#include "refusal.h"

#include "database/device_database.h"
#include "registry/registry_store.h"
#include "store/object_store.h"

#include <cerrno>
#include <fcntl.h>
#include <set>
#include <string>
#include <unistd.h>

namespace platform::device {

namespace {

namespace fs = std::filesystem;
using host::Descriptor;

// A new device is first built in this folder, and then its parts are moved out. The object store is moved last. From
// then on kindOf returns Device for the device's folder.
constexpr const char* UnfinishedFolder = ".quillbox-unfinished";

void check(const std::error_code& error, const std::string& what, const fs::path& path)
{
    if (error)
        refuse(what + " " + quoted(path), error.value());
}

std::set<std::string> namesIn(const fs::path& folder)
{
    std::error_code error;
    std::set<std::string> names;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.insert(entry->path().filename().string());
    if (error)
        refuse("The folder " + quoted(folder) + " can't be read", error.value());
    return names;
}

// Flushes the new files before they are moved. Otherwise a power cut after the moves could leave a device with empty
// files. One flush of the file system takes much less time than a flush of each file.
void flush(const fs::path& folder)
{
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || ::syncfs(opened.get()) != 0)
        refuse("The device can't be made in " + quoted(folder), errno);
}

// Moves a finished part to the device's folder. Does nothing if this part wasn't built, or if an earlier start of the
// program moved the part and was then interrupted.
void moveOut(const fs::path& folder, const char* part)
{
    std::error_code error;
    const fs::path source = folder / UnfinishedFolder / part;
    if (fs::exists(fs::symlink_status(folder / part)) || !fs::exists(fs::symlink_status(source)))
        return;
    fs::rename(source, folder / part, error);
    check(error, "The device can't be made in", folder);
}

}  // namespace

FolderKind kindOf(const fs::path& folder)
{
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found)
        return FolderKind::Missing;
    check(error, "The device can't be reached at", folder);
    if (!fs::is_directory(status))
        throw Refusal(quoted(folder) + " is not a folder, so it can't be a device.");

    std::set<std::string> names = namesIn(folder);
    if (names.contains("object-store"))
        return FolderKind::Device;
    if (names.contains(UnfinishedFolder))
        for (const char* part : {UnfinishedFolder, "cards", "device.db"})
            names.erase(part);
    names.erase("device.lock");
    return names.empty() ? FolderKind::Empty : FolderKind::Other;
}

void makeDevice(const fs::path& folder, bool demonstration)
{
    clearLeftovers(folder);
    const fs::path unfinished = folder / UnfinishedFolder;
    std::error_code error;
    for (const fs::path& part : {unfinished / "object-store", unfinished / "cards"}) {
        fs::create_directories(part, error);
        check(error, "The device can't be made in", folder);
    }
    if (demonstration) {
        writeDemonstrationFiles(unfinished);
        std::string sentence;
        if (!registry::openRegistry(unfinished / "device.db", sentence))
            throw Refusal(sentence);
        // SQLite needn't flush here, because flush() below flushes everything before the folder becomes a device.
        (void)database::DatabaseUse()->execute("PRAGMA synchronous = OFF");
        const bool filled = fillDemonstrationStore();
        store::closeStore();
        registry::closeRegistry();
        if (!filled)
            throw Refusal("The registry and databases of the new device " + quoted(folder) + " can't be written.");
    }
    flush(folder);
    for (const char* part : {"cards", "device.db", "object-store"})
        moveOut(folder, part);
    clearLeftovers(folder);
}

void clearLeftovers(const fs::path& folder)
{
    std::error_code error;
    fs::remove_all(folder / UnfinishedFolder, error);
    check(error, "An unfinished first start can't be cleared away in", folder);
    const fs::path database = fs::weakly_canonical(folder / "device.db", error);
    if (!error)
        (void)removeChangingCopyOf(database);
}

}  // namespace platform::device
