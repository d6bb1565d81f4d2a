// data_file.h - the data file of a set, for reads at any place by any thread.
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
    // A link isn't followed. A file that can't be opened is one that can't be read.
    explicit DataFile(const archive::SetFiles& files);

    // It couldn't be opened only because too many files are open, or there is too little memory.
    [[nodiscard]] bool mayOpenLater() const { return mayOpenLater_; }

    // False if another file has the name now, or if the file was written to. True if it couldn't be opened.
    [[nodiscard]] bool isStill(const archive::SetFiles& files) const;

    // Returns the number of bytes read. It is less than asked only at the end of the file and after an error. It is 0
    // once the file was written to.
    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<std::byte> buffer) const;

    // Writes the bytes from `start` to before `end` to a stream. False if they aren't all there, or after a failed
    // write.
    [[nodiscard]] bool copy(std::uint64_t start, std::uint64_t end, std::ostream& out) const;

private:
    platform::host::Descriptor file_;
    struct stat opened_ {};  // as it was opened
    bool mayOpenLater_ = false;
};

}  // namespace quillbox_mount
