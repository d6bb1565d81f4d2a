// listing.h - `quillbox-set list` for a single set: prints the items of the set.
#pragma once

#include "archive/listed_set.h"

namespace quillbox_set {

enum class ListOrder { OfSet, ByName, BySize, ByPackedSize };

struct ListingOptions {
    bool json = false;
    bool sizes = false;   // also prints unpacked sizes
    bool ratios = false;  // also prints the packed size in percent of the unpacked size
    bool inside = false;  // also prints what databases and the registry contain
    // With any order except OfSet, a row for each item is in memory. BySize and ByPackedSize put the largest item
    // first.
    ListOrder order = ListOrder::OfSet;
};

// Prints the comment and the items. Returns the exit code.
int listSet(archive::ListedSet& set, const archive::MountedSet& files, const ListingOptions& options);

}  // namespace quillbox_set
