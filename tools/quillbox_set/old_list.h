// old_list.h - reads lists that may belong to a data file, and finds the entries for the streams of this file.
#pragma once

#include "archive/listed_set.h"
#include "archive/name_set.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quillbox_set {

struct OldEntry {
    std::uint64_t start;  // of its stream in the data file
    std::uint64_t end;
    BYTE kind;
    std::u16string name;
    bool isFound = false;
};

class OldLists {
public:
    explicit OldLists(const archive::OpenFile& data) : data_(data) {}

    // Adds the undamaged entries of the list. The data file can be longer than the largest end offset of these entries.
    // Then several data files may have been joined into one, and the list may belong to the last of them. If so, all
    // offsets of the list are too small by the difference between the file's length and the largest end offset. add()
    // tests the first 1,000 entries at their own offsets, and again with the difference added. If more entries match
    // stream boundaries with the difference than without it, add() adds it to the offsets of all entries of this list.
    void add(archive::ListedSet& list);
    // Sorts the entries and removes repeated ones. Call sort() after the last add(), before of().
    void sort();

    // Returns the entry of the stream from `start` to `end`, or null if there is none. The entry must begin at `start`.
    // If the stream is whole, the entry must end at `end`. Otherwise the entry may also end after `end`, because the
    // stream may be cut.
    OldEntry* of(std::uint64_t start, std::uint64_t end, bool isWhole);

    // True if an undamaged entry of an added list has this kind and name. In that case an item may be recovered under
    // this name only if its stream belongs to such an entry.
    bool hasName(BYTE kind, std::u16string_view name) const { return names_.has(kind, name); }

    const std::vector<OldEntry>& entries() const { return entries_; }

private:
    [[nodiscard]] bool isBoundary(std::uint64_t offset) const;
    [[nodiscard]] std::size_t agreeing(const std::vector<OldEntry>& entries, std::uint64_t shift) const;

    const archive::OpenFile& data_;
    std::vector<OldEntry> entries_;
    archive::NameSet names_;
};

}  // namespace quillbox_set
