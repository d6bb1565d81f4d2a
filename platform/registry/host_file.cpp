// A file of the host beside the device's database.
#include "host_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::registry {

HostFile::HostFile(const std::filesystem::path& path, int flags)
    : number_(::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666))
{
    note(number_ >= 0);
}

HostFile::~HostFile()
{
    if (number_ >= 0)
        ::close(number_);
}

bool HostFile::isRegularFile() const
{
    struct stat status {};
    return ::fstat(number_, &status) == 0 && S_ISREG(status.st_mode);
}

std::size_t HostFile::read(std::span<std::byte> buffer)
{
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t count = ::read(number_, buffer.data() + done, buffer.size() - done);
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
    return note(::lseek(number_, 0, SEEK_SET) == 0);
}

bool HostFile::write(std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(number_, bytes.data(), bytes.size());
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
    return note(::fsync(number_) == 0);
}

bool HostFile::note(bool good)
{
    if (!good)
        error_ = errno;
    return good;
}

int flushFolder(const std::filesystem::path& folder)
{
    HostFile opened(folder, O_RDONLY | O_DIRECTORY);
    return opened && opened.flush() ? 0 : opened.error();
}

}  // namespace platform::registry
