// database_text.h - writes a database of a set as text that other programs read.
#pragma once

#include "image_check.h"

#include "database_formats/database_format.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillbox_set {

struct DatabaseText {
    database_formats::Format format;
    std::u16string path;
    bool replace;  // an existing file
};

// Writes the complete records of the image. An image has the records of a database in the opposite order, so they are
// written from the last one to the first one. Then equal databases give equal files, whether they are exported from a
// device or extracted from a set. A record is written as a restore would store it. Records without properties are left
// out. The image needs space on the disk beside the file.
//
// Returns an empty text, and sets `bytes` to the size of the file. Otherwise returns the reason of the failure, and
// there is no new file.
std::string writeDatabaseText(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                              const DatabaseText& text, std::optional<std::uint64_t>& bytes);

}  // namespace quillbox_set
