#include "device_copy.h"

#include "failure.h"

#include "registry/registry_store.h"
#include "store/object_store.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>

namespace quillbox_device {

namespace {

namespace fs = std::filesystem;

// The database, the log that may contain its latest changes, and the registry that a restore has staged. When the copy
// is opened, a staged registry replaces the registry in the copied database. The next start of Quillbox does the same
// to the device.
constexpr const char* Copied[] = {"device.db", "device.db-wal", "registry.staged"};

// Locks device.lock in shared mode, which needs no write permission. While Quillbox has the device open, it holds an
// exclusive lock on this file. So Quillbox can't open the device while the shared lock exists. Returns no open
// descriptor if the file is missing. Throws a Failure if the file can't be opened or locked.
platform::host::Descriptor lock(const fs::path& device)
{
    platform::host::Descriptor opened(::open((device / "device.lock").c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened && errno == ENOENT)
        return opened;  // nothing has used this device yet
    if (!opened || ::flock(opened.get(), LOCK_SH | LOCK_NB) != 0)
        throw Failure("The device \"" + device.string() + "\" is in use or can't be locked.");
    return opened;
}

}  // namespace

DeviceCopy::DeviceCopy(const fs::path& device) : device_(device), lock_(lock(device)), copied_(stamps())
{
    const fs::path folder = folder_.path();
    std::error_code error;
    std::string sentence;
    for (const char* name : Copied) {
        if (!error && fs::exists(device / name) && fs::copy_file(device / name, folder / name, error))
            fs::permissions(folder / name, fs::perms::owner_read | fs::perms::owner_write, error);
    }
    const bool opened = !error && platform::registry::openRegistry(folder / "device.db", sentence);
    if (opened && fs::exists(device / "device.db"))
        return;
    platform::registry::closeRegistry();
    throw Failure(!sentence.empty() ? sentence
                                    : "The database of \"" + device.string() + "\" is missing or can't be copied.");
}

DeviceCopy::~DeviceCopy()
{
    platform::store::closeStore();
    platform::registry::closeRegistry();
}

bool DeviceCopy::isOutdated() const
{
    return stamps() != copied_;
}

std::vector<Stamp> DeviceCopy::stamps() const
{
    std::vector<Stamp> found;
    for (const char* name : Copied) {
        struct stat status {};
        found.push_back(::stat((device_ / name).c_str(), &status) == 0 ? stampOf(status) : Stamp{});
    }
    return found;
}

}  // namespace quillbox_device
