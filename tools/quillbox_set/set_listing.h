// set_listing.h - `quillbox-set list` on a folder.
#pragma once

#include "archive/set_folder.h"

namespace quillbox_set {

// Prints the path of the list file and the first line of the comment for each set. Returns the exit code.
int listSets(const archive::SetFolder& folder, bool json);

}  // namespace quillbox_set
