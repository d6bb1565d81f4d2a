// host_file.h - a file of the host beside the device's database, closed when it goes.
#pragma once

#include "host/descriptor.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace platform::registry {

class HostFile {
public:
    // `flags` of the host's open; links are not followed. `error()` tells the errno of a failure.
    HostFile(const std::filesystem::path& path, int flags);

    explicit operator bool() const { return static_cast<bool>(file_); }
    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] bool isRegularFile() const;

    // Fewer bytes come only at the end, or with an error.
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
