// listing.h - `quillbox-set list`.
#pragma once

#include "set_files.h"

namespace quillbox_set {

struct ListingOptions {
    bool json = false;
    // These take unpacking.
    bool sizes = false;   // unpacked sizes too
    bool inside = false;  // and what stands in databases and the registry
};

// Prints comment and items; returns the exit code.
[[nodiscard]] int listSet(const MountedSet& set, const ListingOptions& options);

}  // namespace quillbox_set
