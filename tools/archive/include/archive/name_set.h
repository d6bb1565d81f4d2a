// name_set.h - the names that occurred in a set, which may have millions of items.
#pragma once

#include "ce/types.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace archive {

// Keeps a hash of 128 bits instead of each name. A name takes about 45 bytes of memory, however long it is. Two names
// with the same hash would count as one name, but 128 bits make that too unlikely to happen by chance.
class NameSet {
public:
    bool has(BYTE kind, std::u16string_view name) const { return hashes_.contains(Hash(kind, name)); }

    // False if this name of this kind was there already.
    bool add(BYTE kind, std::u16string_view name) { return hashes_.insert(Hash(kind, name)).second; }

private:
    struct Hash {
        Hash(BYTE kind, std::u16string_view name);
        bool operator==(const Hash&) const = default;

        std::uint64_t first;
        std::uint64_t second;
    };
    struct FirstHalf {
        std::size_t operator()(const Hash& hash) const noexcept { return hash.first; }
    };

    std::unordered_set<Hash, FirstHalf> hashes_;
};

}  // namespace archive
