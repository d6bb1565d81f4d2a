// single_item.h - `quillbox-set cat`: writes one item to standard output.
#pragma once

#include "archive/opened_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>

namespace quillbox_set {

// Writes the item `name` of the set to standard output. `name` is the item's name as `list` prints it, with / or \ as
// the separator. For the registry, it is "registry". `format` has the same meaning as in ExtractionOptions. A database
// needs space for its image in the folder for temporary files. Returns the exit code. If the item is damaged, the
// content before the damage has been written.
int writeItem(const archive::SetFiles& files, const std::string& name, std::optional<database_formats::Format> format);

}  // namespace quillbox_set
