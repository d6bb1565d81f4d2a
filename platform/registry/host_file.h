// host_file.h - an open file of the host. The registry uses it to read and write files beside the device's database.
#pragma once

#include "host/descriptor.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace platform::registry {

class HostFile {
public:
    // `flags` are those of open(2). Links are not followed. After a failure `error()` is the errno.
    HostFile(const std::filesystem::path& path, int flags);

    explicit operator bool() const { return static_cast<bool>(file_); }
    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] bool isRegularFile() const;

    // Returns the number of bytes read. It is below the buffer's size only at the end of the file or after an error.
    [[nodiscard]] std::size_t read(std::span<std::byte> buffer);
    [[nodiscard]] bool rewind();
    [[nodiscard]] bool write(std::span<const std::byte> bytes);
    [[nodiscard]] bool flush();

private:
    bool note(bool good);

    host::Descriptor file_;
    int error_ = 0;
};

}  // namespace platform::registry
