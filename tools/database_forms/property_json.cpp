// property_json.cpp - see property_json.h.

#include "property_json.h"

#include "form_fault.h"
#include "hex_digits.h"
#include "moment_text.h"

#include "host_name.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace database_forms {

namespace {

using Json = nlohmann::ordered_json;

const std::string& textIn(const Json& json, const char* what)
{
    const auto* text = json.get_ptr<const std::string*>();
    if (text == nullptr)
        throw FormFault(what);
    return *text;
}

void putText(Json& json, const WCHAR* text)
{
    const std::u16string_view units(text);
    std::string utf8 = platform::text::toUtf8(units);
    if (platform::text::fromUtf8(utf8) == units)
        json["value"] = std::move(utf8);
    else
        json["units"] = std::vector<std::uint16_t>(units.begin(), units.end());
}

template <class Number>
Number numberOf(const Json& json)
{
    if (!json.is_number_integer())
        throw FormFault("a value isn't a whole number");
    if (json.is_number_unsigned()) {
        const auto number = json.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<Number>::max()))
            throw FormFault("a number is too large for its type");
        return static_cast<Number>(number);
    }
    const auto number = json.get<std::int64_t>();
    if (number < static_cast<std::int64_t>(std::numeric_limits<Number>::min()))
        throw FormFault("a number is too small for its type");
    return static_cast<Number>(number);
}

std::u16string textOf(const Json& property)
{
    std::u16string text;
    if (property.contains("units")) {
        if (!property["units"].is_array())
            throw FormFault("\"units\" isn't a list");
        for (const Json& unit : property["units"])
            text.push_back(numberOf<std::uint16_t>(unit));
    } else if (property.contains("value") && property["value"].is_string()) {
        text = platform::text::fromUtf8(property["value"].get_ref<const std::string&>());
    } else {
        throw FormFault("a value isn't a text");
    }
    return text;
}

CEVALUNION numberFor(WORD type, const Json& value)
{
    switch (type) {
    case CEVT_I2:
        return {.iVal = numberOf<SHORT>(value)};
    case CEVT_UI2:
        return {.uiVal = numberOf<USHORT>(value)};
    case CEVT_I4:
        return {.lVal = numberOf<LONG>(value)};
    case CEVT_UI4:
        return {.ulVal = numberOf<ULONG>(value)};
    case CEVT_BOOL:
        return {.boolVal = numberOf<BOOL>(value)};
    case CEVT_FILETIME: {
        const auto time = numberOf<std::uint64_t>(value);
        return {.filetime = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)}};
    }
    case CEVT_R8:
        if (value.is_number())
            return {.dblVal = value.get<double>()};
        [[fallthrough]];
    default:
        throw FormFault("a value doesn't fit its type");
    }
}

}  // namespace

Json toJson(const CEPROPVAL& property)
{
    Json json;
    json["id"] = hexadecimal(property.propid, 8);
    if (property.wFlags != 0)
        json["flags"] = property.wFlags;
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
        json["value"] = property.val.iVal;
        break;
    case CEVT_UI2:
        json["value"] = property.val.uiVal;
        break;
    case CEVT_I4:
        json["value"] = property.val.lVal;
        break;
    case CEVT_UI4:
        json["value"] = property.val.ulVal;
        break;
    case CEVT_BOOL:
        json["value"] = property.val.boolVal;
        break;
    case CEVT_FILETIME:
        json["value"] = stepsOf(property.val.filetime);
        break;
    case CEVT_LPWSTR:
        putText(json, property.val.lpwstr);
        break;
    case CEVT_BLOB:
        json["value"] = digitsOf(property.val.blob);
        break;
    case CEVT_R8:
        if (std::isfinite(property.val.dblVal)) {
            json["value"] = property.val.dblVal;
            break;
        }
        [[fallthrough]];
    default:
        json["bits"] = bitsOf(property.val);
    }
    return json;
}

void addTo(Record& record, const Json& json)
{
    if (!json.is_object() || !json.contains("id") ||
        (!json.contains("value") && !json.contains("units") && !json.contains("bits")))
        throw FormFault("a property lacks its \"id\" or its value");
    const CEPROPID id = idOf(textIn(json["id"], "an \"id\" isn't eight hexadecimal digits"));
    const WORD flags = json.contains("flags") ? numberOf<WORD>(json["flags"]) : WORD{0};
    const Json none;
    const Json& value = json.contains("value") ? json["value"] : none;
    switch (LOWORD(id)) {
    case CEVT_LPWSTR:
        return record.addText(id, flags, textOf(json));
    case CEVT_BLOB:
        return record.addBlob(id, flags, bytesOf(textIn(value, "a value isn't bytes in hexadecimal digits")));
    default:
        record.add(id, flags,
                   json.contains("bits") ? fromBits(textIn(json["bits"], "\"bits\" aren't hexadecimal digits"))
                                         : numberFor(LOWORD(id), value));
    }
}

}  // namespace database_forms
