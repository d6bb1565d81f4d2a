// database_text.h - writes a database of a set as text that other programs read.
#pragma once

#include "archive/image_check.h"

#include "database_formats/database_format.h"

#include <cstdint>
#include <optional>
#include <ostream>
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
// out, and so is what the format can't hold, which standard error names. The image is unpacked to a file in the root of
// the name space.
//
// Returns an empty text, or the reason of a failure. Afterwards the state of `out` shows whether all of it was written.
std::string writeDatabase(const archive::OpenFile& data, const ListEntry& entry, const archive::ImageReport& image,
                          database_formats::Format format, std::ostream& out);

// Writes it to a file. Returns an empty text, and sets `bytes` to the size of the file. Otherwise returns the reason of
// the failure, and there is no new file.
std::string writeDatabaseText(const archive::OpenFile& data, const ListEntry& entry, const archive::ImageReport& image,
                              const DatabaseText& text, std::optional<std::uint64_t>& bytes);

}  // namespace quillbox_set
