// name_set.cpp - see name_set.h.

#include "name_set.h"

#include <functional>

namespace quillbox_set {

bool NameSet::add(BYTE kind, std::u16string_view name)
{
    if (used_ * 4 >= places_.size() * 3)
        grow();
    const Hash hash = hashOf(kind, name);
    Hash& place = places_[placeOf(hash)];
    if (place == hash)
        return false;
    place = hash;
    used_++;
    return true;
}

bool NameSet::has(BYTE kind, std::u16string_view name) const
{
    const Hash hash = hashOf(kind, name);
    return places_[placeOf(hash)] == hash;
}

NameSet::Hash NameSet::hashOf(BYTE kind, std::u16string_view name)
{
    Hash hash = {std::hash<std::u16string_view>{}(name) + kind, 0xCBF29CE484222325 ^ kind};
    for (const char16_t unit : name)
        hash.low = (hash.low ^ unit) * 0x100000001B3;
    hash.low |= 1;  // never a free place
    return hash;
}

// Where the hash is, or else the next free place from where it points to.
std::size_t NameSet::placeOf(Hash hash) const
{
    const std::size_t mask = places_.size() - 1;
    std::size_t place = static_cast<std::size_t>(hash.high) & mask;
    while (!(places_[place] == Hash{}) && !(places_[place] == hash))
        place = (place + 1) & mask;
    return place;
}

void NameSet::grow()
{
    std::vector<Hash> old(places_.size() * 2);
    old.swap(places_);
    for (const Hash& hash : old) {
        if (!(hash == Hash{}))
            places_[placeOf(hash)] = hash;
    }
}

}  // namespace quillbox_set
