// database_file.h - writes a database of a set to a file, as text that other programs read.
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
    bool replace;  // true: replaces an existing file
};

// Writes the database to the file `target`. Returns an empty text and sets `bytes` to the size of the file. If the
// function fails, it returns the reason and makes no file.
std::string writeDatabaseFile(const archive::OpenFile& data, const ListEntry& entry, const archive::ImageReport& image,
                              const DatabaseFile& target, std::optional<std::uint64_t>& bytes);

}  // namespace quillbox_set
