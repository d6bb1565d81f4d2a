// name_set.h - remembers which names of items occurred in a set. A set can have millions of items.
#pragma once

#include "ce/types.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace archive {

// A hash of 128 bits, which is stored instead of a name. Two names with the same hash would count as one name. With 128
// bits this is too unlikely to happen by chance.
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

    // Returns false if this name of this kind was added before.
    bool add(BYTE kind, std::u16string_view name) { return hashes_.insert(NameHash(kind, name)).second; }

private:
    std::unordered_set<NameHash, FirstHalf> hashes_;
};

}  // namespace archive
