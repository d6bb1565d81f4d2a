// set_listing.h - `quillbox-set list` for a folder: prints the sets in the folder.
#pragma once

#include "archive/set_folder.h"

namespace quillbox_set {

// Prints a line for each set: the path of the list file, the first line of the comment, the number of items, and the
// size of the data file. Returns the exit code.
int listSets(const archive::SetFolder& folder, bool json);

}  // namespace quillbox_set
