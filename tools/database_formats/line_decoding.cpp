#include "line_decoding.h"

#include "database_formats/character_set.h"
#include "database_formats/format_fault.h"
#include "database_formats/left_out.h"
#include "database_formats/value_text.h"
#include "hex_digits.h"

#include <utility>

namespace database_formats {

namespace {

enum class Encoding { None, QuotedPrintable, Base64 };

Encoding encodingOf(const ContentLine& line)
{
    const std::string word = inCapitals(line.parameter("ENCODING"));
    if (word == "QUOTED-PRINTABLE")
        return Encoding::QuotedPrintable;
    return word == "BASE64" || word == "B" ? Encoding::Base64 : Encoding::None;
}

// Keeps a "=" that isn't followed by two hexadecimal digits, because some programs write a plain "=" without coding it.
std::string fromQuotedPrintable(std::string_view value)
{
    std::string bytes;
    while (!value.empty()) {
        const auto byte = value[0] == '=' && value.size() >= 3 ? fromHexadecimal(value.substr(1, 2)) : std::nullopt;
        bytes += byte ? static_cast<char>(*byte) : value[0];
        value.remove_prefix(byte ? 3 : 1);
    }
    return bytes;
}

// Ignores blanks, because some programs begin folded lines with several blanks. The padding at the end may be missing.
std::string fromBase64(std::string_view value)
{
    constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    unsigned bitCount = 0;  // number of lower bits of `bits` that aren't in `bytes` yet
    std::size_t characters = 0;
    bool padded = false;
    bool good = true;
    for (const char c : value) {
        if (c == ' ' || c == '\t')
            continue;
        ++characters;
        const std::size_t digit = Digits.find(c);
        padded = padded || c == '=';
        good = good && (padded ? c == '=' : digit != std::string_view::npos);
        if (padded || !good)
            continue;
        bits = (bits << 6) | static_cast<unsigned>(digit);
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes += static_cast<char>((bits >> bitCount) & 0xFF);
        }
    }
    if (!good || bitCount == 6 || (padded && characters % 4 != 0))
        throw FormatFault("the line's BASE64 is damaged");
    return bytes;
}

std::string decoded(const std::string& value, Encoding encoding)
{
    switch (encoding) {
    case Encoding::QuotedPrintable:
        return fromQuotedPrintable(value);
    case Encoding::Base64:
        return fromBase64(value);
    default:
        return value;
    }
}

const char* whyNotUtf8(Encoding encoding)
{
    switch (encoding) {
    case Encoding::QuotedPrintable:
        return "the line's quoted-printable isn't valid in the CHARSET that it names";
    case Encoding::Base64:
        return "the line's BASE64 isn't a text";
    default:
        return "the line isn't UTF-8; save the file as UTF-8";
    }
}

std::string fromWindows1252(const std::string& bytes)
{
    try {
        return toUtf8(bytes, UsualCharacterSet);
    } catch (const FormatFault&) {
        throw FormatFault(
            "the line's quoted-printable is neither UTF-8 nor Windows-1252, and no CHARSET says what it is");
    }
}

// Quoted-printable without CHARSET should be ASCII or UTF-8, but old desktop programs wrote Windows-1252. Converting
// the file to UTF-8 wouldn't help the user, because quoted-printable consists of ASCII characters, which a conversion
// doesn't change. So a text that isn't valid UTF-8 is read as Windows-1252, and the guess is reported.
void bringToUtf8(ContentLine& line)
{
    const Encoding encoding = encodingOf(line);
    std::string text = decoded(line.value, encoding);
    const std::string characterSet(line.parameter("CHARSET"));
    if (!characterSet.empty() && inCapitals(characterSet) != "UTF-8") {
        text = toUtf8(text, characterSet);
    } else if (encoding == Encoding::QuotedPrintable && characterSet.empty() && !isValidUtf8(text)) {
        text = fromWindows1252(text);
        line.guessed = true;
    }
    if (!isValidUtf8(text))
        throw FormatFault(whyNotUtf8(encoding));
    if (text.find('\0') != std::string::npos)
        throw FormatFault("the line has a NUL in it");
    line.value = std::move(text);
}

}  // namespace

bool isQuotedPrintable(std::string_view line)
{
    const std::string head = inCapitals(line.substr(0, line.find(':')));
    const std::size_t at = head.find("QUOTED-PRINTABLE");
    // If a line has two encodings, the first one applies.
    return at != std::string::npos && head.find("BASE64") > at && head.find("ENCODING=B") > at;
}

std::string withLaterEscapes(std::string_view value)
{
    std::string later;
    for (std::size_t at = 0; at < value.size(); ++at) {
        later += value[at];
        if (value[at] != '\\')
            continue;
        const char next = at + 1 < value.size() ? value[at + 1] : '\0';
        const bool escapes = next == '\\' || next == ',' || next == ';';
        later += escapes ? next : '\\';
        at += escapes ? 1 : 0;
    }
    return later;
}

void decode(ContentLine& line)
{
    try {
        bringToUtf8(line);
    } catch (const FormatFault& fault) {
        line.fault = fault.what();
        line.leftOut = encodingOf(line) != Encoding::None || !line.parameter("CHARSET").empty();
    }
}

}  // namespace database_formats
