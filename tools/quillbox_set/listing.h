// listing.h - `quillbox-set list` on a set.
#pragma once

#include "archive/listed_set.h"

namespace quillbox_set {

enum class ListOrder { OfSet, ByName, BySize, ByPackedSize };

struct ListingOptions {
    bool json = false;
    bool sizes = false;   // also unpacked sizes
    bool ratios = false;  // and the packed size in percent of them
    bool inside = false;  // also what databases and the registry contain
    // Any order but that of the set keeps a row for each item in memory. The largest item comes first.
    ListOrder order = ListOrder::OfSet;
};

// Prints the comment and the items. Returns the exit code.
int listSet(archive::ListedSet& set, const archive::MountedSet& files, const ListingOptions& options);

}  // namespace quillbox_set
