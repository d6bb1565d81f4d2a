#include "archive/registry_values.h"

#include "archive/shown_value.h"
#include "screen_text/screen_text.h"

#include <utility>

namespace archive {

namespace {

constexpr std::size_t MostBytes = std::size_t{64} << 20;
constexpr std::size_t BytesOfPlace = 160;  // the memory of one RegistryPlace without its texts

}  // namespace

bool RegistryValues::put(RegistryPlace place, std::string text)
{
    bytes_ += BytesOfPlace + (place.key.size() + place.name.size()) * sizeof(char16_t) + text.size();
    if (bytes_ > MostBytes)
        return false;
    places.insert_or_assign(std::move(place), std::move(text));
    return true;
}

bool RegistryValues::key(const platform::registry::KeyPath& path)
{
    key_ = keyText(path);
    return put({key_, false, u""}, "");
}

// If a key has two values of the same name, the later one replaces the earlier one.
bool RegistryValues::value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
{
    return put({key_, true, std::u16string(name)}, shownRegistryValue(type, data));
}

std::string onScreen(const RegistryPlace& place)
{
    std::string key = "[" + screen_text::onScreen(place.key) + "]";
    if (!place.isValue)
        return key;
    return key + " " + (place.name.empty() ? "@" : "\"" + screen_text::onScreen(place.name) + "\"");
}

}  // namespace archive
