#include "existing_device.h"

#include "failure.h"
#include "screen_text/screen_text.h"

#include "database/device_database.h"
#include "device/changing_copy.h"
#include "host/files.h"
#include "registry/registry_store.h"
#include "store/object_store.h"

#include <fcntl.h>
#include <sys/stat.h>

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

// Deletes the changing copy at its end, unless the copy has been renamed and is the database by then. It also deletes
// the files of an earlier change that was killed, because SQLite would apply that change's log to the new copy.
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
    std::error_code error;
    if (!fs::is_directory(folder / "object-store", error))
        throw Failure("\"" + folder.string() + "\" is not a device: it has no folder \"object-store\".", exitBadUsage);
    auto opened = platform::device::openDevice(folder, {}, false);
    if (!opened.device)
        throw Failure(opened.error.sentence);
    for (const std::string& warning : opened.warnings)
        std::cerr << "quillbox-device: " << screen_text::onScreen(warning) << '\n';
    return std::move(opened.device);
}

void changeAsAWhole(const platform::device::Device& device, const std::function<void()>& change)
{
    // If device.db is a link, it stays one: the copy replaces the file that the link leads to.
    const fs::path database = fs::canonical(device.folder() / "device.db");
    const fs::path changing = platform::device::changingCopyOf(database);
    closeDatabase();  // writes everything to the one file and deletes the log
    if (fs::exists(database.string() + "-wal"))
        throw Failure("The device's database \"" + database.string() + "\" can't be closed.");
    const Copy copy(database);
    std::error_code error;
    if (!fs::copy_file(database, changing, error))
        throw Failure("A copy of the device's database can't be written: " + error.message() + ".");
    std::string sentence;
    if (!platform::registry::openRegistry(changing, sentence))
        throw Failure(sentence);
    // The flush below covers the whole copy, so single transactions need none.
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
