#include "property_json.h"

#include "database_formats/format_fault.h"
#include "hex_digits.h"
#include "moment_text.h"

#include "text/host_name.h"
#include "text/utf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string_view>

namespace database_formats {

namespace {

using Json = nlohmann::ordered_json;

const std::string& textIn(const Json& json, const char* what)
{
    const auto* text = json.get_ptr<const std::string*>();
    if (text == nullptr)
        throw FormatFault(what);
    return *text;
}

// Removes a piece from the beginning of the text and returns it. No piece ends between the two units of a character.
// Writing in pieces avoids a second copy of a large text in memory.
std::u16string_view takePiece(std::u16string_view& text)
{
    constexpr std::size_t PieceUnits = 4096;
    const std::u16string_view piece = text.substr(0, platform::text::wholeUnits(text, PieceUnits));
    text.remove_prefix(piece.size());
    return piece;
}

bool isUnicode(std::u16string_view text)
{
    while (!text.empty()) {
        const std::u16string_view piece = takePiece(text);
        if (platform::text::fromUtf8(platform::text::toUtf8(piece)) != piece)
            return false;
    }
    return true;
}

void writeText(std::ostream& out, std::u16string_view text)
{
    const bool unicode = isUnicode(text);
    out << (unicode ? R"(,"value":")" : R"(,"units":[)");
    for (const char* comma = ""; !unicode && !text.empty(); comma = ",") {
        out << comma << static_cast<unsigned>(text.front());
        text.remove_prefix(1);
    }
    while (!text.empty()) {
        const std::string quoted = Json(platform::text::toUtf8(takePiece(text))).dump();
        out << std::string_view(quoted).substr(1, quoted.size() - 2);
    }
    out << (unicode ? '"' : ']');
}

void writeBytes(std::ostream& out, CEBLOB bytes)
{
    constexpr DWORD PieceBytes = 4096;
    out << R"(,"value":")";
    while (bytes.dwCount > 0) {
        const DWORD piece = std::min(PieceBytes, bytes.dwCount);
        out << digitsOf({piece, bytes.lpb});
        bytes = {bytes.dwCount - piece, bytes.lpb + piece};
    }
    out << '"';
}

// Returns the value as a JSON number. Returns nothing if JSON has no number for the value.
std::optional<Json> numberIn(const CEPROPVAL& property)
{
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
        return property.val.iVal;
    case CEVT_UI2:
        return property.val.uiVal;
    case CEVT_I4:
        return property.val.lVal;
    case CEVT_UI4:
        return property.val.ulVal;
    case CEVT_BOOL:
        return property.val.boolVal;
    case CEVT_FILETIME:
        return stepsOf(property.val.filetime);
    case CEVT_R8:
        if (std::isfinite(property.val.dblVal))
            return property.val.dblVal;
        [[fallthrough]];
    default:
        return std::nullopt;
    }
}

template <class Number>
Number numberOf(const Json& json)
{
    if (!json.is_number_integer())
        throw FormatFault("a value isn't a whole number");
    if (json.is_number_unsigned()) {
        const auto number = json.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<Number>::max()))
            throw FormatFault("a number is too large for its type");
        return static_cast<Number>(number);
    }
    const auto number = json.get<std::int64_t>();
    if (number < static_cast<std::int64_t>(std::numeric_limits<Number>::min()))
        throw FormatFault("a number is too small for its type");
    return static_cast<Number>(number);
}

std::u16string textOf(const Json& property)
{
    std::u16string text;
    if (property.contains("units")) {
        if (!property["units"].is_array())
            throw FormatFault("\"units\" isn't a list");
        for (const Json& unit : property["units"])
            text.push_back(numberOf<std::uint16_t>(unit));
    } else if (property.contains("value") && property["value"].is_string()) {
        text = platform::text::fromUtf8(property["value"].get_ref<const std::string&>());
    } else {
        throw FormatFault("a value isn't a text");
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
        throw FormatFault("a value doesn't fit its type");
    }
}

}  // namespace

void writeJson(std::ostream& out, const CEPROPVAL& property)
{
    out << R"({"id":")" << hexadecimal(property.propid, 8) << '"';
    if (property.wFlags != 0)
        out << R"(,"flags":)" << property.wFlags;
    if (LOWORD(property.propid) == CEVT_LPWSTR)
        writeText(out, property.val.lpwstr);
    else if (LOWORD(property.propid) == CEVT_BLOB)
        writeBytes(out, property.val.blob);
    else if (const auto number = numberIn(property))
        out << R"(,"value":)" << *number;
    else
        out << R"(,"bits":")" << bitsOf(property.val) << '"';
    out << '}';
}

void addTo(Record& record, const Json& json)
{
    if (!json.is_object() || !json.contains("id") ||
        (!json.contains("value") && !json.contains("units") && !json.contains("bits")))
        throw FormatFault("a property lacks its \"id\" or its value");
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

}  // namespace database_formats
