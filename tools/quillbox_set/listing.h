// listing.h - `quillbox-set list`.
#pragma once

#include "listed_set.h"

namespace quillbox_set {

struct ListingOptions {
    bool json = false;
    bool sizes = false;   // also unpacked sizes
    bool inside = false;  // also what databases and the registry contain
};

// Prints the comment and the items. Returns the exit code.
int listSet(ListedSet& set, const MountedSet& files, const ListingOptions& options);

}  // namespace quillbox_set
