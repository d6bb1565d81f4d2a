#include "archive/host_output.h"

#include "archive/long_work.h"

#include "host/files.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace archive {

namespace fs = std::filesystem;
namespace host = platform::host;

using platform::host::Descriptor;

namespace {

struct TemporaryFile {
    std::string path;
    Descriptor opened;
};

// Makes a new file in the target's folder. Its name can't be guessed, so nobody can make a link of that name
// beforehand. If the file can't be made, `opened` has no descriptor.
TemporaryFile makeBeside(const fs::path& target, mode_t mode)
{
    const fs::path path = target.parent_path() / ("." + host::unguessableName() + ".part");
    Descriptor made(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    return made ? TemporaryFile{path.string(), std::move(made)} : TemporaryFile{};
}

[[noreturn]] void refuse(const std::string& target, const std::error_code& reason)
{
    throw std::runtime_error("\"" + target + "\" can't be written: " + reason.message() + ".");
}

// Returns the status of the object that the path leads to. Returns nothing if nothing exists at the path. Throws if the
// path is a link that leads nowhere, or if the status can't be read.
std::optional<struct stat> statusOf(const std::string& target)
{
    struct stat found {};
    if (::stat(target.c_str(), &found) == 0)
        return found;
    const int error = errno;
    std::error_code ignored;
    if (error != ENOENT)
        refuse(target, std::error_code(error, std::generic_category()));
    if (fs::is_symlink(fs::symlink_status(target, ignored)))
        throw std::runtime_error("\"" + target + "\" is a link that leads nowhere.");
    return std::nullopt;
}

// True if `found` is the object that standard output writes to, for example because the path is /dev/stdout. Standard
// output may be a regular file that the shell has opened. That file must not be replaced.
bool isStandardOutput(const struct stat& found)
{
    struct stat output {};
    return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == found.st_dev && output.st_ino == found.st_ino;
}

// Flushes the file. Returns false if the flush or an earlier write has failed. The descriptor was opened before the
// first write, so fsync() also reports the failure of an earlier write. Objects without a disk, such as pipes, need no
// flush. For them fsync() fails with EINVAL or EROFS.
bool flushToDisk(int file)
{
    return ::fsync(file) == 0 || errno == EINVAL || errno == EROFS;
}

}  // namespace

Output::Output(const std::string& file, bool force) : target_(file)
{
    if (file == "-")
        return;
    if (file.empty())
        throw std::runtime_error("The path of the file to write is empty.");
    const std::optional<struct stat> found = statusOf(file);
    if (found && isStandardOutput(*found))
        return;
    if (found && S_ISDIR(found->st_mode))
        throw std::runtime_error("\"" + file + "\" is a folder.");
    const bool isFile = found && S_ISREG(found->st_mode);
    if (!force && found && (isFile || S_ISBLK(found->st_mode)))
        throw std::runtime_error("\"" + file + "\" exists already; --force replaces it.");
    if (isFile) {
        std::error_code failure;
        target_ = fs::canonical(file, failure).string();
        if (failure)
            refuse(file, failure);
        replaced_ = found;
    }
    if (!found || isFile) {
        openTemporary();
    } else {
        if (S_ISBLK(found->st_mode))
            disk_ = Descriptor(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
        file_.open(file, std::ios::binary);
    }
    if (!file_.is_open())
        throw std::runtime_error("\"" + file + "\" can't be written.");
    isPrinted_ = false;
}

Output::~Output()
{
    std::error_code ignored;
    if (!temporary_.empty())
        fs::remove(temporary_, ignored);
}

// A file that replaces another one gets the rights of that file in finish(). Until then only the user can read it.
void Output::openTemporary()
{
    catchSignals();  // so that a signal leaves no temporary file
    TemporaryFile made = makeBeside(target_, replaced_ ? 0600 : 0666);
    temporary_ = made.path;
    disk_ = std::move(made.opened);
    if (disk_)
        file_.open(temporary_, std::ios::binary | std::ios::trunc);
    std::error_code ignored;
    if (!file_.is_open())
        fs::remove(temporary_, ignored);
}

void Output::finish()
{
    bool good = stream().flush().good();
    if (!isPrinted_) {
        file_.close();
        good = good && file_.good();
    }
    good = good && (temporary_.empty() || !replaced_ ||
                    host::setRights(disk_.get(), {replaced_->st_uid, replaced_->st_gid, replaced_->st_mode}) == 0);
    const int disk = isPrinted_ ? STDOUT_FILENO : disk_.get();
    if (!good || (disk >= 0 && !flushToDisk(disk)))
        throw std::runtime_error((isPrinted_ ? "Standard output" : "\"" + target_ + "\"") + " can't be written.");
    if (temporary_.empty())
        return;
    std::error_code failure;
    fs::rename(temporary_, target_, failure);
    if (failure)
        refuse(target_, failure);
    temporary_.clear();
    const fs::path folder = fs::path(target_).parent_path();
    if (host::flushFolder(folder) != 0)
        throw std::runtime_error("\"" + target_ + "\" is written, but its folder can't be: a power cut may lose it.");
}

}  // namespace archive
