#include "registry/registry_text_writer.h"

#include "ce/registry.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <utility>

namespace platform::registry {

static_assert(std::endian::native == std::endian::little, "the text's code units are written as they lie in memory");

namespace {

constexpr std::size_t PieceUnits = 32768;
constexpr std::size_t LongestHexLine = 76;  // the format's usual width; a line is broken only between bytes
constexpr char16_t FirstPrintable = u' ';

bool isControl(char16_t unit)
{
    return unit < FirstPrintable;
}

// Returns the text if it can be written in quotes. Its only NUL must be at the end, and an editor must be able to show
// all its characters. Otherwise returns nothing, and the caller writes the data as hexadecimal bytes.
std::optional<std::u16string> plainText(std::span<const std::byte> data)
{
    if (data.size() < sizeof(char16_t) || data.size() % sizeof(char16_t) != 0)
        return std::nullopt;
    std::u16string text(data.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), data.data(), data.size());
    if (text.back() != u'\0')
        return std::nullopt;
    text.pop_back();
    if (std::ranges::any_of(text, isControl) || !isText(text))
        return std::nullopt;
    return text;
}

unsigned digitsOf(std::uint32_t number)
{
    return std::max(1U, static_cast<unsigned>(std::bit_width(number) + 3) / 4);
}

}  // namespace

RegistryTextWriter::RegistryTextWriter(Output output) : output_(std::move(output))
{
    put(u"\xFEFFWindows Registry Editor Version 5.00");
    endLine();
}

bool RegistryTextWriter::key(const KeyPath& path)
{
    ++keys_;
    endLine();
    put(u'[');
    put(PredefinedNames[path.root - 1]);
    for (const std::u16string& level : path.levels) {
        put(u'\\');
        for (const char16_t unit : level) {
            if (isControl(unit)) {
                // Two backslashes begin an escape. They can't be two separators, because no level is empty.
                put(u"\\\\");
                putHexadecimal(unit, 4);
            } else {
                put(unit);
            }
        }
    }
    put(u']');
    endLine();
    return good_;
}

bool RegistryTextWriter::value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
{
    ++values_;
    if (name.empty())
        put(u'@');
    else
        putQuoted(name);
    put(u'=');
    const auto text = type == REG_SZ ? plainText(data) : std::nullopt;
    if (text) {
        putQuoted(*text);
    } else if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, data.data(), sizeof(number));
        put(u"dword:");
        putHexadecimal(number, 8);
    } else {
        putData(type, data);
    }
    endLine();
    return good_;
}

bool RegistryTextWriter::finish()
{
    endLine();
    put(u"; End of registry: ");
    putNumber(keys_);
    put(u" keys, ");
    putNumber(values_);
    put(u" values");
    endLine();
    flush();
    return good_;
}

void RegistryTextWriter::put(char16_t unit)
{
    if (pending_.size() == PieceUnits)
        flush();
    pending_.push_back(unit);
    ++column_;
}

void RegistryTextWriter::put(std::u16string_view text)
{
    for (const char16_t unit : text)
        put(unit);
}

void RegistryTextWriter::putNumber(std::size_t number)
{
    for (const char digit : std::to_string(number))
        put(static_cast<char16_t>(digit));
}

void RegistryTextWriter::putHexadecimal(std::uint32_t number, unsigned digits)
{
    while (digits > 0)
        put(u"0123456789abcdef"[(number >> (4 * --digits)) & 0xF]);
}

// Writes control characters, such as line breaks in a value's name, unchanged.
void RegistryTextWriter::putQuoted(std::u16string_view text)
{
    put(u'"');
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\')
            put(u'\\');
        put(unit);
    }
    put(u'"');
}

void RegistryTextWriter::putData(DWORD type, std::span<const std::byte> data)
{
    put(u"hex");
    if (type != REG_BINARY) {
        put(u'(');
        putHexadecimal(type, digitsOf(type));
        put(u')');
    }
    put(u':');
    for (std::size_t at = 0; at < data.size(); ++at) {
        putHexadecimal(std::to_integer<std::uint32_t>(data[at]), 2);
        if (at + 1 == data.size())
            break;
        put(u',');
        if (column_ > LongestHexLine) {
            put(u'\\');
            endLine();
            put(u"  ");
        }
    }
}

void RegistryTextWriter::endLine()
{
    put(u"\r\n");
    column_ = 0;
}

void RegistryTextWriter::flush()
{
    good_ = good_ && output_(std::as_bytes(std::span(pending_)));
    pending_.clear();
}

}  // namespace platform::registry
