#include "database_formats/value_text.h"

#include "database_formats/format_fault.h"
#include "hex_digits.h"
#include "moment_text.h"

#include "text/host_name.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace database_formats {

namespace {

constexpr std::string_view UnitsMark = "utf16:";
constexpr std::string_view BytesMark = "hex:";
constexpr std::string_view BitsMark = "bits:";

bool isPlain(std::string_view text, Controls controls)
{
    return std::ranges::none_of(text, [controls](char c) {
        const bool lineOrTab = c == '\r' || c == '\n' || c == '\t';
        return (static_cast<unsigned char>(c) < 0x20 && !(lineOrTab && controls == Controls::Kept)) || c == 0x7F;
    });
}

std::string textOf(std::u16string_view units, Controls controls)
{
    std::string utf8 = platform::text::toUtf8(units);
    if (isPlain(utf8, controls) && !utf8.starts_with(UnitsMark) && platform::text::fromUtf8(utf8) == units)
        return utf8;
    std::string coded(UnitsMark);
    for (const char16_t unit : units)
        coded += hexadecimal(unit, 4);
    return coded;
}

std::string textOf(const CEBLOB& blob, Controls controls)
{
    std::string bytes(blob.dwCount, 0);
    std::copy_n(blob.lpb, blob.dwCount, bytes.begin());
    if (isPlain(bytes, controls) && !bytes.starts_with(BytesMark) && isValidUtf8(bytes))
        return bytes;
    return std::string(BytesMark) + digitsOf(blob);
}

std::string textOf(double number)
{
    char digits[32];
    return {digits, std::to_chars(digits, std::end(digits), number).ptr};
}

std::u16string unitsFrom(std::string_view text)
{
    if (!text.starts_with(UnitsMark))
        return validText(text);
    text.remove_prefix(UnitsMark.size());
    std::u16string units;
    for (; !text.empty(); text.remove_prefix(4)) {
        const auto unit = text.size() >= 4 ? fromHexadecimal(text.substr(0, 4)) : std::nullopt;
        if (!unit)
            throw FormatFault("\"utf16:\" isn't followed by four hexadecimal digits a character");
        units.push_back(static_cast<char16_t>(*unit));
    }
    return units;
}

std::string blobFrom(std::string_view text)
{
    return text.starts_with(BytesMark) ? bytesOf(text.substr(BytesMark.size())) : std::string(text);
}

template <class Number>
Number numberFrom(std::string_view text)
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range)
        throw FormatFault("a number is too large or too small for its type");
    if (error != std::errc() || stopped != end)
        throw FormatFault("a value isn't a number");
    return number;
}

FILETIME timeFrom(std::string_view text)
{
    if (std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; })) {
        const auto steps = numberFrom<std::uint64_t>(text);
        return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    }
    const auto time = fileTimeOf(momentFrom(text));
    if (!time)
        throw FormatFault("a time is before 1601");
    return *time;
}

CEVALUNION valueFrom(WORD type, std::string_view text)
{
    if (text.starts_with(BitsMark))
        return fromBits(text.substr(BitsMark.size()));
    switch (type) {
    case CEVT_I2:
        return {.iVal = numberFrom<SHORT>(text)};
    case CEVT_UI2:
        return {.uiVal = numberFrom<USHORT>(text)};
    case CEVT_I4:
        return {.lVal = numberFrom<LONG>(text)};
    case CEVT_UI4:
        return {.ulVal = numberFrom<ULONG>(text)};
    case CEVT_BOOL:
        return {.boolVal = numberFrom<BOOL>(text)};
    case CEVT_FILETIME:
        return {.filetime = timeFrom(text)};
    case CEVT_R8:
        return {.dblVal = numberFrom<double>(text)};
    default:
        throw FormatFault("a value of this type isn't \"bits:\" and hexadecimal digits");
    }
}

}  // namespace

std::string valueText(const CEPROPVAL& property, Controls controls)
{
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
        return std::to_string(property.val.iVal);
    case CEVT_UI2:
        return std::to_string(property.val.uiVal);
    case CEVT_I4:
        return std::to_string(property.val.lVal);
    case CEVT_UI4:
        return std::to_string(property.val.ulVal);
    case CEVT_BOOL:
        return std::to_string(property.val.boolVal);
    case CEVT_FILETIME:
        return timeText(property.val.filetime);
    case CEVT_LPWSTR:
        return textOf(std::u16string_view(property.val.lpwstr), controls);
    case CEVT_BLOB:
        return textOf(property.val.blob, controls);
    case CEVT_R8:
        if (std::isfinite(property.val.dblVal))
            return textOf(property.val.dblVal);
        [[fallthrough]];
    default:
        return std::string(BitsMark) + bitsOf(property.val);
    }
}

bool isZero(const CEPROPVAL& property)
{
    const WORD type = LOWORD(property.propid);
    return type != CEVT_LPWSTR && type != CEVT_BLOB && valueText(property, Controls::Kept) == "0";
}

void addFromText(Record& record, CEPROPID id, WORD flags, std::string_view text)
{
    const WORD type = LOWORD(id);
    if (type == CEVT_LPWSTR)
        record.addText(id, flags, unitsFrom(text));
    else if (type == CEVT_BLOB)
        record.addBlob(id, flags, blobFrom(text));
    else
        record.add(id, flags, valueFrom(type, text));
}

WORD flagsFrom(std::string_view digits)
{
    return numberFrom<WORD>(digits);
}

bool isValidUtf8(std::string_view bytes)
{
    return platform::text::toUtf8(platform::text::fromUtf8(bytes)) == bytes;
}

std::u16string validText(std::string_view utf8)
{
    std::u16string text = platform::text::fromUtf8(utf8);
    if (platform::text::toUtf8(text) != utf8)
        throw FormatFault("a text isn't valid UTF-8");
    return text;
}

void addUtf8(Record& record, CEPROPID id, std::string_view utf8)
{
    if (!utf8.empty())
        record.addText(id, 0, validText(utf8));
}

}  // namespace database_formats
