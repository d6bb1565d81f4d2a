// finding.h - `quillbox-set find`: finds items in several sets.
#pragma once

#include "archive/set_search.h"

#include <string>

namespace quillbox_set {

struct FindOptions {
    std::string pattern;  // of names. Without a separator it also matches the last part of a path.
    std::string text;     // words that must also be inside. Empty: the names decide.
    bool ignoreCase = false;
    bool json = false;
};

// Prints a line for each place as soon as it is found. Returns the exit code: exitFaults also if nothing was found.
int findItems(const archive::FoundSets& found, const FindOptions& options);

}  // namespace quillbox_set
