// history.h - `quillbox-set history`: one item over several sets.
#pragma once

#include "archive/set_search.h"

#include <optional>
#include <string>
#include <utility>

namespace quillbox_set {

struct HistoryOptions {
    std::string item;    // its name as in `list`
    std::string record;  // words of a record of a database. Empty: the database as a whole.
    std::optional<std::pair<std::string, std::string>> value;  // key and name of a value of the registry
    bool json = false;
};

// Prints when the item appeared, changed and vanished, in the order of the dates of the sets. Returns the exit code:
// exitFaults also if no set has it. One state of the item is in memory, with the records that have the words.
int showHistory(const archive::FoundSets& found, const HistoryOptions& options);

}  // namespace quillbox_set
