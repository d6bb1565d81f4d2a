// database_file.h - writes a database of a set to a file in the name space, as text that other programs read.
#pragma once

#include "archive/image_check.h"

#include "database_formats/database_format.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillbox_set {

struct DatabaseFile {
    database_formats::Format format;
    std::u16string path;
    bool replace;  // an existing file
};

// Returns an empty text, and sets `bytes` to the size of the file. Otherwise returns the reason of the failure, and
// there is no new file.
std::string writeDatabaseFile(const archive::OpenFile& data, const ListEntry& entry, const archive::ImageReport& image,
                              const DatabaseFile& target, std::optional<std::uint64_t>& bytes);

}  // namespace quillbox_set
