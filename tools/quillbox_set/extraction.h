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
    // The format of databases. With a format, the registry is written as a .reg file. Without a format, the unpacked
    // bytes of databases and of the registry are written without any conversion.
    std::optional<database_formats::Format> format = database_formats::Format::JsonLines;
    bool force = false;        // replaces existing files
    bool keepDamaged = false;  // keeps what could be unpacked of a damaged item
    bool json = false;
    std::string folder;  // the host folder to write to; in JSON output, the paths of files begin with it
};

// `options.folder` must be the platform's root folder. Prints the result for each item. Returns the exit code.
int extractItems(archive::ListedSet& set, const archive::MountedSet& files, const ExtractionOptions& options);

}  // namespace quillbox_set
