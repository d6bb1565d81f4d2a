// item_text.h - writes items as other programs read them: databases and the registry as text, files as they are.
#pragma once

#include "archive/image_check.h"
#include "archive/listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <ostream>
#include <string>

namespace archive {

// Writes the complete records of the image. An image contains the records of a database in reverse order, but the
// function writes them in the order of the database. Since an export from a device writes the same order, equal
// databases become equal files. Each record is written as a restore would store it. Records without properties are left
// out. Values that the format can't represent are also left out, and are added to `leftOut`. The function unpacks the
// image to a temporary file in the root folder.
//
// Returns an empty text, or the reason of a failure. If a write to `out` fails, only the state of `out` shows that.
std::string writeDatabase(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                          database_formats::Format format, std::ostream& out, database_formats::LeftOut& leftOut);

// Writes any item. `format` has the same meaning as in targetOf() (item_target.h). Returns the fault of the item, or an
// empty text. If the item has a fault, the content before the fault has been written.
std::string writeItemText(const OpenFile& data, Item item, std::optional<database_formats::Format> format,
                          std::ostream& out, database_formats::LeftOut& leftOut);

}  // namespace archive
