// extraction.h - `quillbox-set extract`: items out of a set into a folder of the host, never outside it.
#pragma once

#include "set_files.h"

#include <string>
#include <vector>

namespace quillbox_set {

struct ExtractionOptions {
    std::vector<std::string> names;  // of items, or patterns; none: all
    bool force = false;              // replaces files that exist
    bool keepDamaged = false;        // leaves what could be unpacked of a damaged item
    bool json = false;
};

// The folder is the root of the name space. Prints what became of each item; returns the exit code.
[[nodiscard]] int extractItems(const MountedSet& set, const ExtractionOptions& options);

}  // namespace quillbox_set
