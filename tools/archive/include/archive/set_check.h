// set_check.h - checks that a set complies with docs/format.md.
#pragma once

#include "archive/item_content.h"
#include "archive/opened_set.h"

#include <string>

namespace archive {

// Receives what a check finds, and if it wants, the content of the items.
class CheckSink : public ContentSink {
public:
    // Each item of the list, before anything else about it.
    virtual void item(const Item& /*item*/) {}
    // `item` is null for a fault of the list file or the data file as a whole.
    virtual void fault(const Item* /*item*/, const std::string& /*reason*/) {}
    // What isn't a fault, but can surprise the user.
    virtual void warning(const Item* /*item*/, const std::string& /*reason*/) {}
    // Before and after the content of an item. An item whose offsets are wrong has none.
    virtual void begin(const Item& /*item*/) {}
    virtual void end(const Item& /*item*/, const ContentReport& /*content*/) {}
};

struct SetState {
    std::uint64_t items = 0;
    std::uint64_t faults = 0;
    std::uint64_t warnings = 0;
    bool isSealed = false;  // there is a file with checksums

    bool isSound() const { return faults == 0; }
};

// Whether the name of a file or a database can be restored on this host. A restore makes a temporary file \NAME.CDB for
// a database.
bool isUsableName(const Item& item);

enum class SealUse { Checked, Ignored };

// Reads the whole set, from which no item was read before. A sealed set that was changed is unsound.
SetState checkSet(const OpenedSet& set, CheckSink& sink, SealUse seal = SealUse::Checked);

// The first fault of the set, with its item. Empty if the set is sound.
std::string firstFaultOf(const OpenedSet& set, SealUse seal = SealUse::Checked);

}  // namespace archive
