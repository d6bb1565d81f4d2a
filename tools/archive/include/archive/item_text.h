// item_text.h - writes items as other programs read them: databases and the registry as text, files as they are.
#pragma once

#include "archive/image_check.h"
#include "archive/listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <ostream>
#include <string>

namespace archive {

// Writes the complete records of the image. An image has the records of a database in the opposite order, so they are
// written from the last one to the first one. Then equal databases give equal files, whether they are exported from a
// device or extracted from a set. A record is written as a restore would store it. Records without properties are left
// out, and so is what the format can't hold, which is added to `leftOut`. The image is unpacked to a file in the root
// of the name space.
//
// Returns an empty text, or the reason of a failure. Afterwards the state of `out` shows whether all of it was written.
std::string writeDatabase(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                          database_formats::Format format, std::ostream& out, database_formats::LeftOut& leftOut);

// Writes any item. `format` is as in targetOf() (item_target.h). Returns the fault of the item, or an empty text. What
// comes before the fault has been written.
std::string writeItemText(const OpenFile& data, Item item, std::optional<database_formats::Format> format,
                          std::ostream& out, database_formats::LeftOut& leftOut);

}  // namespace archive
