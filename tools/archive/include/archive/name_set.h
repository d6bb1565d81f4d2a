// name_set.h - the names that occurred in a set, which may have millions of items.
#pragma once

#include "ce/types.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace archive {

// A hash of 128 bits instead of a name. Two names with the same hash would count as one name, but 128 bits make that
// too unlikely to happen by chance.
struct NameHash {
    NameHash(BYTE kind, std::u16string_view name);
    bool operator==(const NameHash&) const = default;

    std::uint64_t first;
    std::uint64_t second;
};

struct FirstHalf {
    std::size_t operator()(const NameHash& hash) const noexcept { return hash.first; }
};

// A name takes about 45 bytes of memory, however long it is.
class NameSet {
public:
    bool has(BYTE kind, std::u16string_view name) const { return hashes_.contains(NameHash(kind, name)); }

    // False if this name of this kind was there already.
    bool add(BYTE kind, std::u16string_view name) { return hashes_.insert(NameHash(kind, name)).second; }

private:
    std::unordered_set<NameHash, FirstHalf> hashes_;
};

}  // namespace archive
