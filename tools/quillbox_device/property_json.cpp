// property_json.cpp - see property_json.h.

#include "property_json.h"

#include "failure.h"

#include "host_name.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace quillbox_device {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t LongestBlob = 0xFFFFFFFF;

std::string hexadecimal(std::uint64_t number, unsigned digits)
{
    std::string text(digits, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= 4)
        *digit = "0123456789abcdef"[number & 0xF];
    return text;
}

std::uint64_t fromHexadecimal(const Json& json, std::size_t digits, const char* what)
{
    const auto* text = json.get_ptr<const std::string*>();
    std::uint64_t number = 0;
    if (text == nullptr || text->size() != digits ||
        std::from_chars(text->data(), text->data() + digits, number, 16).ptr != text->data() + digits)
        throw Failure(what);
    return number;
}

std::uint64_t bitsOf(const CEVALUNION& value)
{
    static_assert(sizeof(FILETIME) == 8);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::uint64_t timeOf(const FILETIME& time)
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
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

std::string digitsOf(const CEBLOB& blob)
{
    std::string digits;
    digits.reserve(std::size_t{2} * blob.dwCount);
    for (DWORD at = 0; at < blob.dwCount; ++at)
        digits += hexadecimal(blob.lpb[at], 2);
    return digits;
}

template <class Number>
Number numberOf(const Json& json)
{
    if (!json.is_number_integer())
        throw Failure("a value isn't a whole number");
    if (json.is_number_unsigned()) {
        const auto number = json.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<Number>::max()))
            throw Failure("a number is too large for its type");
        return static_cast<Number>(number);
    }
    const auto number = json.get<std::int64_t>();
    if (number < static_cast<std::int64_t>(std::numeric_limits<Number>::min()))
        throw Failure("a number is too small for its type");
    return static_cast<Number>(number);
}

std::u16string textOf(const Json& property)
{
    std::u16string text;
    if (property.contains("units")) {
        if (!property["units"].is_array())
            throw Failure("\"units\" isn't a list");
        for (const Json& unit : property["units"])
            text.push_back(numberOf<std::uint16_t>(unit));
    } else if (property["value"].is_string()) {
        text = platform::text::fromUtf8(property["value"].get_ref<const std::string&>());
    } else {
        throw Failure("a value isn't a text");
    }
    if (text.find(u'\0') != std::u16string::npos)
        throw Failure("a text has a NUL in it");
    return text;
}

std::string bytesOf(const Json& json)
{
    const auto* digits = json.get_ptr<const std::string*>();
    if (digits == nullptr || digits->size() % 2 != 0 || digits->size() / 2 > LongestBlob)
        throw Failure("a value isn't bytes in hexadecimal digits");
    std::string bytes;
    bytes.reserve(digits->size() / 2);
    for (std::size_t at = 0; at < digits->size(); at += 2) {
        unsigned byte = 0;
        if (std::from_chars(&(*digits)[at], &(*digits)[at] + 2, byte, 16).ptr != &(*digits)[at] + 2)
            throw Failure("a value isn't bytes in hexadecimal digits");
        bytes.push_back(static_cast<char>(byte));
    }
    return bytes;
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
        json["value"] = timeOf(property.val.filetime);
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
        json["bits"] = hexadecimal(bitsOf(property.val), 16);
    }
    return json;
}

void RecordInput::add(const Json& json)
{
    if (!json.is_object() || !json.contains("id") ||
        (!json.contains("value") && !json.contains("units") && !json.contains("bits")))
        throw Failure("a property lacks its \"id\" or its value");
    Json property = json;  // so that a key that isn't there reads as null
    CEPROPVAL made{};
    made.propid = static_cast<CEPROPID>(fromHexadecimal(property["id"], 8, "an \"id\" isn't eight hexadecimal digits"));
    made.wFlags = property.contains("flags") ? numberOf<WORD>(property["flags"]) : WORD{0};
    if ((made.wFlags & (CEDB_PROPDELETE | CEDB_PROPNOTFOUND)) != 0)
        throw Failure("\"flags\" of a stored property can't be 256 or 512");
    const Json& value = property["value"];
    const WORD type = LOWORD(made.propid);
    if (type == CEVT_LPWSTR)
        made.val.lpwstr = texts_.emplace_back(textOf(property)).data();
    else if (type == CEVT_BLOB) {
        std::string& bytes = blobs_.emplace_back(bytesOf(value));
        made.val.blob = {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(bytes.data())};
    } else if (property.contains("bits")) {
        const std::uint64_t bits = fromHexadecimal(property["bits"], 16, "\"bits\" aren't sixteen hexadecimal digits");
        std::memcpy(&made.val, &bits, sizeof bits);
    } else if (type == CEVT_I2)
        made.val.iVal = numberOf<SHORT>(value);
    else if (type == CEVT_UI2)
        made.val.uiVal = numberOf<USHORT>(value);
    else if (type == CEVT_I4)
        made.val.lVal = numberOf<LONG>(value);
    else if (type == CEVT_UI4)
        made.val.ulVal = numberOf<ULONG>(value);
    else if (type == CEVT_BOOL)
        made.val.boolVal = numberOf<BOOL>(value);
    else if (type == CEVT_FILETIME) {
        const auto time = numberOf<std::uint64_t>(value);
        made.val.filetime = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    } else if (type == CEVT_R8 && value.is_number())
        made.val.dblVal = value.get<double>();
    else
        throw Failure("a value doesn't fit its type");
    properties_.push_back(made);
}

}  // namespace quillbox_device
