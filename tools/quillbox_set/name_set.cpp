// name_set.cpp - see name_set.h.

#include "name_set.h"

#include <functional>

namespace quillbox_set {

bool NameSet::add(BYTE kind, std::u16string_view name)
{
    if (used_ * 4 >= places_.size() * 3)
        grow();
    if (!put(hashOf(kind, name)))
        return false;
    used_++;
    return true;
}

NameSet::Hash NameSet::hashOf(BYTE kind, std::u16string_view name)
{
    Hash hash = {std::hash<std::u16string_view>{}(name) + kind, 0xCBF29CE484222325 ^ kind};
    for (const char16_t unit : name)
        hash.low = (hash.low ^ unit) * 0x100000001B3;
    hash.low |= 1;  // never a free place
    return hash;
}

// The next free place from where the hash points to.
bool NameSet::put(Hash hash)
{
    const std::size_t mask = places_.size() - 1;
    std::size_t place = static_cast<std::size_t>(hash.high) & mask;
    while (!(places_[place] == Hash{})) {
        if (places_[place] == hash)
            return false;
        place = (place + 1) & mask;
    }
    places_[place] = hash;
    return true;
}

void NameSet::grow()
{
    std::vector<Hash> old(places_.size() * 2);
    old.swap(places_);
    for (const Hash& hash : old) {
        if (!(hash == Hash{}))
            put(hash);
    }
}

}  // namespace quillbox_set
