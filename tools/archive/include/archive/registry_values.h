// registry_values.h - the keys and values of a registry item, for comparisons.
#pragma once

#include "archive/item_content.h"

#include <compare>
#include <map>
#include <string>

namespace archive {

// A key, or a value of a key. For a key, `name` is empty. A key sorts before its values.
struct RegistryPlace {
    std::u16string key;
    bool isValue = false;
    std::u16string name;  // of the value. Empty for the default value.

    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the operator for a null pointer
    auto operator<=>(const RegistryPlace&) const = default;
};

// Collects the keys and values of a registry in the map `places`, which has a short text for each value (shown_value.h)
// and an empty text for each key. A hostile registry can have any number of keys and values. So key() and value()
// return false, which ends the reading, if `places` would need more than 64 MiB.
class RegistryValues final : public ContentSink {
public:
    bool key(const platform::registry::KeyPath& path) override;
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override;

    std::map<RegistryPlace, std::string> places;

private:
    bool put(RegistryPlace place, std::string text);

    std::u16string key_;
    std::size_t bytes_ = 0;  // memory of `places`, roughly
};

// Returns a text for the screen: the path of the key in brackets, and after it the name of the value in quotes.
std::string onScreen(const RegistryPlace& place);

}  // namespace archive
