#include "data_file.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace quillbox_mount {

DataFile::DataFile(const archive::SetFiles& files)
    : file_(::open((std::filesystem::path(files.folder) / files.dataName).c_str(),
                   O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK))
{
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
    return done;
}

}  // namespace quillbox_mount
