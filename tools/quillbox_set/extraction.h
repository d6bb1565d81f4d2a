// extraction.h - `quillbox-set extract`: writes items of a set into a folder of the host, never outside of it.
#pragma once

#include "archive/listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>
#include <vector>

namespace quillbox_set {

struct ExtractionOptions {
    std::vector<std::string> names;  // names of items, or patterns. Empty: all items.
    // The format of databases. The registry is then written as a .reg file. Nothing: both are written as they are in
    // the set.
    std::optional<database_formats::Format> format = database_formats::Format::JsonLines;
    bool force = false;        // replaces existing files
    bool keepDamaged = false;  // keeps what could be unpacked of a damaged item
    bool json = false;
    std::string folder;  // to write to, on the host. JSON names the written files in it.
};

// The folder is the root of the name space. Prints what became of each item. Returns the exit code.
int extractItems(archive::ListedSet& set, const archive::MountedSet& files, const ExtractionOptions& options);

}  // namespace quillbox_set
