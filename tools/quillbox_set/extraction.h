// extraction.h - `quillbox-set extract`: items out of a set into a folder of the host, never outside it.
#pragma once

#include "set_files.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>
#include <vector>

namespace quillbox_set {

struct ExtractionOptions {
    std::vector<std::string> names;  // of items, or patterns; none: all
    // Of databases, and with any of them the registry as the text that it is; none: both as they lie in the set.
    std::optional<database_formats::Format> format = database_formats::Format::JsonLines;
    bool force = false;        // replaces files that exist
    bool keepDamaged = false;  // leaves what could be unpacked of a damaged item
    bool json = false;
};

// The folder is the root of the name space. Prints what became of each item; returns the exit code.
[[nodiscard]] int extractItems(const MountedSet& set, const ExtractionOptions& options);

}  // namespace quillbox_set
