#include "database_formats/identifier.h"

#include "database_formats/value_text.h"
#include "hex_digits.h"

#include "ce/personal_databases.h"

#include "text/host_name.h"

#include <algorithm>
#include <vector>

namespace database_formats {

std::string Identifiers::of(std::span<const CEPROPVAL> record)
{
    const CEPROPVAL* own = propertyIn(record, personal::Identifier);
    std::string text = own != nullptr ? platform::text::toUtf8(own->val.lpwstr) : std::string();
    if (text.empty())
        return ofContent(record);
    used_.insert(text);
    return text;
}

std::string Identifiers::ofContent(std::span<const CEPROPVAL> record)
{
    std::vector<std::string> properties;
    for (const CEPROPVAL& property : record)
        if (property.propid != personal::Identifier)
            properties.push_back(hexadecimal(property.propid, 8) + valueText(property, Controls::Kept) + '\n');
    std::ranges::sort(properties);
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
    for (const std::string& property : properties)
        for (const char c : property)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    std::string identifier;
    do
        identifier = hexadecimal(hash, 16) + "-" + std::to_string(++equalRecords_[hash]) + "@quillbox";
    while (used_.contains(identifier));
    return identifier;
}

const CEPROPVAL* propertyIn(std::span<const CEPROPVAL> properties, CEPROPID id)
{
    const auto found = std::ranges::find(properties, id, &CEPROPVAL::propid);
    return found != properties.end() ? &*found : nullptr;
}

}  // namespace database_formats
