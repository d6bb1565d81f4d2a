#include "archive/registry_values.h"

#include "archive/shown_value.h"
#include "screen_text/screen_text.h"

namespace archive {

bool RegistryValues::key(const platform::registry::KeyPath& path)
{
    key_ = keyText(path);
    places.emplace(RegistryPlace{key_, false, u""}, "");
    return true;
}

// The later one of two values of the same name counts.
bool RegistryValues::value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
{
    places[{key_, true, std::u16string(name)}] = shownRegistryValue(type, data);
    return true;
}

std::string onScreen(const RegistryPlace& place)
{
    std::string key = "[" + screen_text::onScreen(place.key) + "]";
    if (!place.isValue)
        return key;
    return key + " " + (place.name.empty() ? "@" : "\"" + screen_text::onScreen(place.name) + "\"");
}

}  // namespace archive
