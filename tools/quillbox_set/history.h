// history.h - `quillbox-set history`: prints how one item changed over several sets.
#pragma once

#include "archive/set_search.h"

#include <optional>
#include <string>
#include <utility>

namespace quillbox_set {

struct HistoryOptions {
    std::string item;    // the name of the item as in `list`
    std::string record;  // words of a record of a database. Empty: the database as a whole.
    std::optional<std::pair<std::string, std::string>> value;  // key and name of a value of the registry
    bool json = false;
};

// Prints when the item appeared, changed and vanished, in the order of the sets' dates. Returns exitNoSet if
// `found.faults` isn't empty. Otherwise returns exitFaults if no set has the wanted item, value or record, or if
// something is damaged or can't be read. Otherwise returns exitGood. At most two states of the item are in memory. The
// state of a database has the records that contain the words in `options.record`.
int showHistory(const archive::FoundSets& found, const HistoryOptions& options);

}  // namespace quillbox_set
