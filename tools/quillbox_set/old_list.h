// old_list.h - the entries of lists that may belong to a data file, as far as they agree with it.
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

    // Takes the undamaged entries. If the data file is longer than the list says, it may have been joined from several,
    // and this one may be the last of them. Then the entries are moved if more of them agree with streams there.
    void add(archive::ListedSet& list);
    // Call it after the last list.
    void sort();

    // The entry of a stream that begins there. Null if there is none. A cut stream agrees with its entry if it doesn't
    // reach beyond the entry's end, a whole one if it ends there.
    OldEntry* of(std::uint64_t start, std::uint64_t end, bool isWhole);

    // Whether a list has an item of this kind and name, so that it is no other stream's name.
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
