// database_text.h - a database of a set as text that other programs read.
#pragma once

#include "image_check.h"

#include "database_formats/database_format.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillbox_set {

struct DatabaseText {
    database_formats::Format format;
    std::u16string path;  // of the file
    bool replace;         // one that exists
};

// Writes the records that `image` has whole in the database's own order, which its image turns around: so equal
// databases give equal files, out of a device or out of a set. Of a record comes what a restore would put
// into a device of it; one without properties is left out. Needs room beside the file for the image.
//
// Returns what hindered it; no new file is left then. `bytes` is the file's size.
[[nodiscard]] std::string writeDatabaseText(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                                            const DatabaseText& text, std::optional<std::uint64_t>& bytes);

}  // namespace quillbox_set
