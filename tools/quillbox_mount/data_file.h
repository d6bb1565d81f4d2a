// data_file.h - the data file of a set, for reads at any place by any thread.
#pragma once

#include "archive/set_files.h"
#include "host/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quillbox_mount {

class DataFile {
public:
    // A link isn't followed. A file that can't be opened is one that can't be read.
    explicit DataFile(const archive::SetFiles& files);

    // Returns the number of bytes read. It is less than asked only at the end of the file and after an error.
    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<std::byte> buffer) const;

private:
    platform::host::Descriptor file_;
};

}  // namespace quillbox_mount
