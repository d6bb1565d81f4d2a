#include "archive/name_set.h"

#include <functional>

namespace archive {

// The two halves of the hash come from unrelated functions: `first` from the hash of the standard library, and `second`
// from FNV-1a over the characters.
NameHash::NameHash(BYTE kind, std::u16string_view name)
    : first(std::hash<std::u16string_view>{}(name) + kind), second(0xCBF29CE484222325 ^ kind)
{
    for (const char16_t unit : name)
        second = (second ^ unit) * 0x100000001B3;
}

}  // namespace archive
