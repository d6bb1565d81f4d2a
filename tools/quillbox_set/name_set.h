// name_set.h - which names were seen, for millions of them: each costs 16 to 32 bytes, however long it is.
#pragma once

#include "ce/types.h"

#include <string_view>
#include <vector>

namespace quillbox_set {

// Names are told apart by 128 bits of hash: two that differ and pass for one don't occur by chance.
class NameSet {
public:
    [[nodiscard]] bool has(BYTE kind, std::u16string_view name) const;

    // False if this name of this kind was there.
    bool add(BYTE kind, std::u16string_view name);

private:
    struct Hash {
        std::uint64_t high = 0;
        std::uint64_t low = 0;  // both 0: a free place
        bool operator==(const Hash&) const = default;
    };

    static Hash hashOf(BYTE kind, std::u16string_view name);
    [[nodiscard]] std::size_t placeOf(Hash hash) const;
    void grow();

    std::vector<Hash> places_ = std::vector<Hash>(1024);
    std::size_t used_ = 0;
};

}  // namespace quillbox_set
