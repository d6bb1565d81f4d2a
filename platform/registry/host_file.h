// host_file.h - a file of the host beside the device's database, closed when it goes.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

namespace platform::registry {

class HostFile {
public:
    // `flags` of the host's open; links are not followed. `error()` tells the errno of a failure.
    HostFile(const std::filesystem::path& path, int flags);
    HostFile(const HostFile&) = delete;
    HostFile& operator=(const HostFile&) = delete;
    ~HostFile();

    explicit operator bool() const { return number_ >= 0; }
    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] bool isRegularFile() const;

    // Fewer bytes come only at the end, or with an error.
    [[nodiscard]] std::size_t read(std::span<std::byte> buffer);
    [[nodiscard]] bool rewind();
    [[nodiscard]] bool write(std::span<const std::byte> bytes);
    [[nodiscard]] bool flush();

private:
    bool note(bool good);

    int number_;
    int error_ = 0;
};

// Makes the entries of a folder last: what was renamed or removed in it stays so. 0 or the errno.
[[nodiscard]] int flushFolder(const std::filesystem::path& folder);

}  // namespace platform::registry
