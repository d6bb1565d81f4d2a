// set_check.h - checks that a set complies with docs/format.md.
#pragma once

#include "archive/item_content.h"
#include "archive/opened_set.h"

#include <string>

namespace archive {

// Receives what a check finds. A subclass can also receive the content of the items.
class CheckSink : public ContentSink {
public:
    // Receives each item of the list. This is the first call for the item.
    virtual void item(const Item& /*item*/) {}
    // Receives a fault of `item`, or of the set as a whole if `item` is null.
    virtual void fault(const Item* /*item*/, const std::string& /*reason*/) {}
    // Receives what isn't a fault, but can surprise the user.
    virtual void warning(const Item* /*item*/, const std::string& /*reason*/) {}
    // begin() and end() are called before and after the content of an item is read. They aren't called if the content
    // can't be found. The causes are a cut entry, a wrong end offset, and a data file that can't be opened.
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

// The item must be a file or a database. Returns whether a restore on this host can use its name. For a database, a
// restore makes a temporary file \NAME.CDB. So the name must also be usable in that path.
bool isUsableName(const Item& item);

enum class SealUse { Checked, Ignored };

// Reads and checks the whole set. The caller must not have read an item of `set` before. With SealUse::Checked, a set
// whose files don't match its file with checksums (seal.h) is unsound.
SetState checkSet(const OpenedSet& set, CheckSink& sink, SealUse seal = SealUse::Checked);

// Returns the first fault of the set, with its item. Empty if the set is sound.
std::string firstFaultOf(const OpenedSet& set, SealUse seal = SealUse::Checked);

}  // namespace archive
