// finding.h - `quillbox-set find`: finds items in several sets.
#pragma once

#include "archive/set_search.h"

#include <string>

namespace quillbox_set {

struct FindOptions {
    std::string pattern;  // of item names; without a separator, the pattern also matches the last part of a path
    std::string text;     // words that the item must also contain; empty: only the name decides
    bool ignoreCase = false;
    bool json = false;
};

// Prints a line for each match as soon as it is found. Returns exitNoSet if `found.faults` isn't empty. Otherwise
// returns exitFaults if there was no match, or if something is damaged or can't be read. Otherwise returns exitGood.
int findItems(const archive::FoundSets& found, const FindOptions& options);

}  // namespace quillbox_set
