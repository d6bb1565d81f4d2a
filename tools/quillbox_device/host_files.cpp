// host_files.cpp - see host_files.h.

#include "host_files.h"

#include "failure.h"

#include "host/files.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace quillbox_device {

namespace fs = std::filesystem;
namespace host = platform::host;

using platform::host::Descriptor;

namespace {

struct GrowingFile {
    std::string path;
    Descriptor opened;
};

// A new file in the target's folder. Nobody can know its name and put a link there before. Not open on failure.
GrowingFile madeBeside(const fs::path& target, mode_t mode)
{
    const fs::path path = target.parent_path() / ("." + host::unguessableName() + ".part");
    Descriptor made(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    return made ? GrowingFile{path.string(), std::move(made)} : GrowingFile{};
}

// What stands at the target, behind links; nothing if a new file can be made there. Throws a Failure.
std::optional<struct stat> foundAt(const std::string& target)
{
    struct stat found {};
    if (::stat(target.c_str(), &found) == 0)
        return found;
    const int error = errno;
    std::error_code ignored;
    if (error != ENOENT)
        throw Failure("\"" + target + "\" can't be written: " + std::generic_category().message(error) + ".");
    if (fs::is_symlink(fs::symlink_status(target, ignored)))
        throw Failure("\"" + target + "\" is a link that leads nowhere.");
    return std::nullopt;
}

// By another name, such as /dev/stdout. A file that the shell has opened for it isn't one to be replaced.
bool isStandardOutput(const struct stat& found)
{
    struct stat output {};
    return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == found.st_dev && output.st_ino == found.st_ino;
}

// A pipe, and whatever else has no disk, needs no flush. The descriptor was opened before the first write, so the host
// reports each write that failed since.
bool isFlushed(int file)
{
    return ::fsync(file) == 0 || errno == EINVAL || errno == EROFS;
}

}  // namespace

Input::Input(const std::string& file)
{
    if (file == "-")
        return;
    file_.open(file, std::ios::binary);
    if (!file_ || fs::is_directory(file))
        throw Failure("\"" + file + "\" can't be read.", exitBadUsage);
}

Output::Output(const std::string& file, bool force) : target_(file)
{
    if (file == "-")
        return;
    const std::optional<struct stat> found = foundAt(file);
    if (found && isStandardOutput(*found))
        return;
    if (found && S_ISDIR(found->st_mode))
        throw Failure("\"" + file + "\" is a folder.");
    const bool isFile = found && S_ISREG(found->st_mode);
    if (!force && found && (isFile || S_ISBLK(found->st_mode)))
        throw Failure("\"" + file + "\" exists already; --force replaces it.");
    if (isFile) {
        target_ = fs::canonical(file).string();
        replaced_ = found;
    }
    if (!found || isFile) {
        growBesideTarget();
    } else {
        if (S_ISBLK(found->st_mode))
            disk_ = Descriptor(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
        file_.open(file, std::ios::binary);
    }
    if (!file_.is_open())
        throw Failure("\"" + file + "\" can't be written.");
}

Output::~Output()
{
    std::error_code ignored;
    if (!growing_.empty())
        fs::remove(growing_, ignored);
}

// Until it has the rights of the file that it replaces, nobody else may look into it.
void Output::growBesideTarget()
{
    GrowingFile growing = madeBeside(target_, replaced_ ? 0600 : 0666);
    growing_ = growing.path;
    disk_ = std::move(growing.opened);
    if (disk_)
        file_.open(growing_, std::ios::binary | std::ios::trunc);
    std::error_code ignored;
    if (!file_.is_open())
        fs::remove(growing_, ignored);
}

void Output::finish()
{
    const bool printed = !file_.is_open();
    bool good = stream().flush().good();
    if (!printed) {
        file_.close();
        good = good && file_.good();
    }
    good = good && (growing_.empty() || !replaced_ ||
                    host::setRights(disk_.get(), {replaced_->st_uid, replaced_->st_gid, replaced_->st_mode}) == 0);
    const int disk = printed ? STDOUT_FILENO : disk_.get();
    if (!good || (disk >= 0 && !isFlushed(disk)))
        throw Failure((printed ? "Standard output" : "\"" + target_ + "\"") + " can't be written.");
    if (growing_.empty())
        return;
    fs::rename(growing_, target_);
    growing_.clear();
    const fs::path folder = fs::path(target_).parent_path();
    if (host::flush(folder / ".") != 0)
        throw Failure("\"" + target_ + "\" is written, but its folder can't be: a power cut may lose it.");
}

}  // namespace quillbox_device
