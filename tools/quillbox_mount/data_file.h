// data_file.h - reads the data file of a set, on any thread and at any offset.
#pragma once

#include "archive/set_files.h"
#include "host/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>

#include <sys/stat.h>

namespace quillbox_mount {

class DataFile {
public:
    // Opens the file, but doesn't follow a link. If the file can't be opened, all reads fail.
    explicit DataFile(const archive::SetFiles& files);

    // True if the constructor couldn't open the file because too many files were open or memory was short. A later
    // attempt may succeed.
    [[nodiscard]] bool mayOpenLater() const { return mayOpenLater_; }

    // Returns whether the path of the data file still leads to the open file, and whether this file is unchanged since
    // it was opened. Also returns true if the constructor couldn't open the file.
    [[nodiscard]] bool isStill(const archive::SetFiles& files) const;

    // Reads the bytes from `offset` on into the buffer and returns their number. This number is smaller than the
    // buffer's size only at the end of the file and after an error. It is 0 after a program has changed the file.
    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<std::byte> buffer) const;

    // Copies the bytes from `start` up to, but not including, `end` to a stream. Returns false if the file doesn't have
    // all of these bytes or if a write fails.
    [[nodiscard]] bool copy(std::uint64_t start, std::uint64_t end, std::ostream& out) const;

private:
    platform::host::Descriptor file_;
    struct stat opened_ {};  // the status of the file when it was opened
    bool mayOpenLater_ = false;
};

}  // namespace quillbox_mount
