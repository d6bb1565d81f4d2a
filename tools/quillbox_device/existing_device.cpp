#include "existing_device.h"

#include "archive/long_work.h"
#include "failure.h"
#include "screen_text/screen_text.h"

#include "database/device_database.h"
#include "device/changing_copy.h"
#include "host/files.h"
#include "registry/registry_store.h"
#include "store/object_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <system_error>
#include <utility>

namespace quillbox_device {

namespace {

namespace fs = std::filesystem;

void closeDatabase()
{
    platform::store::closeStore();
    platform::registry::closeRegistry();
}

void flush(const fs::path& path)
{
    if (const int error = platform::host::flush(path))
        throw Failure("\"" + path.string() + "\" can't be written: " + std::generic_category().message(error) + ".");
}

bool copyRights(const fs::path& from, const fs::path& to)
{
    struct stat status {};
    const platform::host::Descriptor opened(::open(to.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    return opened && ::stat(from.c_str(), &status) == 0 &&
           platform::host::setRights(opened.get(), {status.st_uid, status.st_gid, status.st_mode}) == 0;
}

void requireDevice(const fs::path& folder)
{
    std::error_code error;
    const bool there = fs::is_directory(folder / "object-store", error);
    if (error && error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
        throw Failure("\"" + folder.string() + "\" can't be read: " + error.message() + ".", exitBadUsage);
    if (!there)
        throw Failure("\"" + folder.string() + "\" is not a device: it has no folder \"object-store\".", exitBadUsage);
}

void warn(const std::string& sentence)
{
    std::cerr << "quillbox-device: " << screen_text::onScreen(sentence) << '\n';
}

bool isClosedToWriting(const fs::path& path)
{
    return ::access(path.c_str(), W_OK) != 0 && errno != ENOENT;
}

// Owns a copy of the device's database. A command changes the copy, which then replaces the database. The destructor
// deletes the copy, unless the copy was renamed and is the database now. The constructor deletes the copy and the log
// that a killed process left. Otherwise SQLite would apply that log to the new copy.
class Copy {
public:
    explicit Copy(fs::path database) : database_(std::move(database))
    {
        if (!platform::device::removeChangingCopyOf(database_))
            throw Failure("Files of an earlier change beside \"" + database_.string() + "\" can't be deleted.");
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy()
    {
        closeDatabase();
        (void)platform::device::removeChangingCopyOf(database_);
    }

private:
    fs::path database_;
};

}  // namespace

std::unique_ptr<platform::device::Device> openExisting(const fs::path& folder)
{
    requireDevice(folder);
    auto opened = platform::device::openDevice(folder, {}, false);
    if (!opened.device)
        throw Failure(opened.error.sentence);
    for (const std::string& warning : opened.warnings)
        warn(warning);
    return std::move(opened.device);
}

DeviceToRead::DeviceToRead(const fs::path& folder) : folder_(fs::absolute(folder).lexically_normal())
{
    requireDevice(folder_);
    if (!isClosedToWriting(folder_) && !isClosedToWriting(folder_ / "device.db") &&
        !isClosedToWriting(folder_ / "device.lock")) {
        device_ = openExisting(folder_);
        return;
    }
    try {
        openCopy();
    } catch (const fs::filesystem_error& error) {
        throw Failure("The device's database can't be copied: " + error.code().message() + ".");
    }
}

DeviceToRead::~DeviceToRead()
{
    if (!device_)
        closeDatabase();
}

// Copies the database, its log and a staged registry. The log beside the database may contain changes of a process that
// was killed. A staged registry is a file that is to replace the registry in the database. A shared lock excludes
// writers during the copying. If nobody can write to the folder, the lock file may be missing, and no lock is needed.
void DeviceToRead::openCopy()
{
    lock_ = platform::host::Descriptor(::open((folder_ / "device.lock").c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (lock_ && ::flock(lock_.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw Failure("The device \"" + folder_.string() + "\" is open in another Quillbox.");
    archive::catchSignals();  // so that a signal leaves no copy
    copy_.emplace();
    const fs::path database = fs::weakly_canonical(folder_ / "device.db");
    for (const auto& [from, to] :
         {std::pair(database, "device.db"), std::pair(fs::path(database.string() + "-wal"), "device.db-wal"),
          std::pair(folder_ / "registry.staged", "registry.staged")})
        if (fs::exists(from)) {
            const fs::path copied = fs::path(copy_->path()) / to;
            fs::copy_file(from, copied);
            fs::permissions(copied, fs::perms::owner_read | fs::perms::owner_write);  // a file on a CD is read-only
        } else if (from == database && lock_ && fs::file_size(folder_ / "device.lock") != 0) {
            warn("\"" + from.string() + "\" is missing: the device has no databases and an empty registry.");
        }
    std::string sentence;
    if (!platform::registry::openRegistry(fs::path(copy_->path()) / "device.db", sentence))
        throw Failure("A copy of the database of \"" + folder_.string() + "\" can't be read: " + sentence);
    if (!sentence.empty())
        warn(sentence);
}

void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change)
{
    // If device.db is a link, it stays a link: the copy replaces the file that the link leads to.
    const fs::path database = fs::canonical(device.folder() / "device.db");
    const fs::path changing = platform::device::changingCopyOf(database);
    closeDatabase();  // writes the log's changes to the database file and deletes the log
    if (fs::exists(database.string() + "-wal"))
        throw Failure("The device's database \"" + database.string() + "\" can't be closed.");
    const Copy copy(database);
    std::error_code error;
    if (!fs::copy_file(database, changing, error))
        throw Failure("A copy of the device's database can't be written: " + error.message() + ".");
    std::string sentence;
    if (!platform::registry::openRegistry(changing, sentence))
        throw Failure(sentence);
    // The flush below covers the whole copy, so single transactions need no flush.
    (void)platform::database::DatabaseUse()->execute("PRAGMA synchronous = OFF");
    change();
    closeDatabase();
    if (fs::exists(changing.string() + "-wal"))
        throw Failure("The change can't be written to the device's disk.");
    if (!copyRights(database, changing))
        throw Failure("The access rights of the device's database can't be given to its changed copy.");
    flush(changing);
    fs::rename(changing, database);
    if (platform::host::flushFolder(database.parent_path()) != 0)
        throw Failure("The change is made, but the device's folder can't be written: a power cut may undo it.");
}

}  // namespace quillbox_device
