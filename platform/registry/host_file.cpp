#include "host_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::registry {

HostFile::HostFile(const std::filesystem::path& path, int flags)
    : file_(::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666))
{
    note(static_cast<bool>(file_));
}

bool HostFile::isRegularFile() const
{
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode);
}

std::size_t HostFile::read(std::span<std::byte> buffer)
{
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t count = ::read(file_.get(), buffer.data() + done, buffer.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (!note(count >= 0) || count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

bool HostFile::rewind()
{
    return note(::lseek(file_.get(), 0, SEEK_SET) == 0);
}

bool HostFile::write(std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(file_.get(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (!note(count >= 0))
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool HostFile::flush()
{
    return note(::fsync(file_.get()) == 0);
}

bool HostFile::note(bool good)
{
    if (!good)
        error_ = errno;
    return good;
}

}  // namespace platform::registry
