#include "data_file.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace quillbox_mount {

namespace {

constexpr std::size_t CopiedBytes = 262144;  // the number of bytes that copy() reads at once

std::filesystem::path dataPathOf(const archive::SetFiles& files)
{
    return std::filesystem::path(files.folder) / files.dataName;
}

bool isUnchanged(const struct stat& before, const struct stat& now)
{
    return before.st_dev == now.st_dev && before.st_ino == now.st_ino && before.st_size == now.st_size &&
           before.st_mtim.tv_sec == now.st_mtim.tv_sec && before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

}  // namespace

DataFile::DataFile(const archive::SetFiles& files)
    : file_(::open(dataPathOf(files).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK))
{
    const int error = file_ ? 0 : errno;
    mayOpenLater_ = error == EMFILE || error == ENFILE || error == ENOMEM;
    if (file_ && ::fstat(file_.get(), &opened_) != 0)
        file_ = {};
}

bool DataFile::isStill(const archive::SetFiles& files) const
{
    struct stat now {};
    return !file_ || (::lstat(dataPathOf(files).c_str(), &now) == 0 && isUnchanged(opened_, now));
}

std::size_t DataFile::read(std::uint64_t offset, std::span<std::byte> buffer) const
{
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t bytes =
            ::pread(file_.get(), &buffer[done], buffer.size() - done, static_cast<off_t>(offset + done));
        if (bytes < 0 && errno == EINTR)
            continue;
        if (bytes <= 0)
            break;
        done += static_cast<std::size_t>(bytes);
    }
    struct stat now {};
    return file_ && ::fstat(file_.get(), &now) == 0 && isUnchanged(opened_, now) ? done : 0;
}

bool DataFile::copy(std::uint64_t start, std::uint64_t end, std::ostream& out) const
{
    std::vector<std::byte> buffer(CopiedBytes);
    for (std::uint64_t at = start; at < end && out; at += buffer.size()) {
        buffer.resize(std::min<std::uint64_t>(CopiedBytes, end - at));
        if (read(at, buffer) != buffer.size())
            return false;
        out.write(reinterpret_cast<const char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()));
    }
    return out.good();
}

}  // namespace quillbox_mount
