// temporary_content.h - keeps the bytes of a temporary file (temporary_files.h). At first the bytes are in memory. When
// they no longer fit there, they move to an unnamed file, which is a file of the host without a directory entry
// (O_TMPFILE). The memory and the unnamed file disappear when the process ends, even if it is killed. When the
// temporary file gets a name on the host, its bytes are copied to the file with that name.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "read_ahead.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

// Each object belongs to one SharedFile, whose lock guards it.
class TemporaryContent {
public:
    static constexpr std::size_t MemoryBytes = 262144;
    using Memory = std::unique_ptr<std::byte[]>;  // MemoryBytes bytes long

    TemporaryContent(HostPath path, Memory memory);

    bool isInMemory() const { return memory_ != nullptr; }

    // Call these functions only while the bytes are in memory. `size` is the length of the file. takes() returns
    // whether a write of `bytes` bytes at `offset` fits into memory and begins at or before the end of the file.
    bool takes(std::uint64_t offset, std::size_t bytes, std::uint64_t size) const;
    void put(std::uint64_t offset, std::span<const std::byte> bytes);
    std::size_t read(std::uint64_t offset, std::span<std::byte> out, std::uint64_t size) const;

    // Moves the bytes from memory to an unnamed file, and reads the status of that file. Returns 0 or a negative errno.
    // After a failure the bytes are still in memory.
    [[nodiscard]] int spill(std::uint64_t size, HostStatus& status);

    // The descriptor of the host's file; -1 while the bytes are in memory.
    int file() const { return file_.get(); }

    // Copies all bytes to `file`; 0 or a negative errno.
    [[nodiscard]] int copyTo(int file, std::uint64_t size) const;

    // From now on the file `named` holds the bytes. The caller has already copied them there with copyTo().
    void replaceBy(Descriptor named);
    bool isNamed() const { return named_; }

    [[nodiscard]] Memory takeMemory() { return std::move(memory_); }

private:
    const HostPath path_;
    Memory memory_;
    Descriptor file_;
    bool named_ = false;
};

}  // namespace platform::file
