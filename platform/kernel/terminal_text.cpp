#include "terminal_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace platform::kernel {

namespace {

bool isAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

// Returns the number of bytes of the UTF-8 character that begins with this byte. Returns 0 for ASCII, and for a byte
// with which no character begins.
std::size_t lengthFrom(char first)
{
    const auto byte = static_cast<unsigned char>(first);
    return byte >= 0xC2 && byte < 0xE0 ? 2 : byte >= 0xE0 && byte < 0xF0 ? 3 : byte >= 0xF0 && byte < 0xF5 ? 4 : 0;
}

bool isControl(const std::string& character)
{
    return character.size() == 2 && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

TerminalText::TerminalText(std::ostream& stream, bool expectsUtf8)
    : stream_(stream), terminal_(stream.rdbuf(this)), expectsUtf8_(expectsUtf8)
{
}

TerminalText::~TerminalText()
{
    (void)end();
    stream_.rdbuf(terminal_);
}

// Writes the bytes of `character_`. Writes a question mark instead if they aren't a whole character or can't be shown.
bool TerminalText::end()
{
    if (character_.empty())
        return true;
    const bool shown = expectsUtf8_ && character_.size() == lengthFrom(character_[0]) && !isControl(character_);
    const std::string text = shown ? character_ : "?";
    character_.clear();
    const auto size = static_cast<std::streamsize>(text.size());
    return terminal_->sputn(text.data(), size) == size;
}

bool TerminalText::put(char byte)
{
    if (!isContinuation(byte) && !end())
        return false;
    if (isAscii(byte))
        return terminal_->sputc(byte) != traits_type::eof();
    character_ += byte;
    return character_.size() < std::max(lengthFrom(character_[0]), std::size_t{1}) || end();
}

TerminalText::int_type TerminalText::overflow(int_type byte)
{
    if (traits_type::eq_int_type(byte, traits_type::eof()))
        return traits_type::not_eof(byte);
    return put(traits_type::to_char_type(byte)) ? byte : traits_type::eof();
}

std::streamsize TerminalText::xsputn(const char* text, std::streamsize count)
{
    for (std::streamsize at = 0; at < count; at++) {
        if (!put(text[at]))
            return at;
    }
    return count;
}

int TerminalText::sync()
{
    return terminal_->pubsync();
}

bool localeHasUtf8()
{
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): no other thread exists yet
        if (value == nullptr || *value == '\0')
            continue;
        std::string name = value;
        std::ranges::transform(name, name.begin(),
                               [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
        return name.find("utf-8") != std::string::npos || name.find("utf8") != std::string::npos;
    }
    return false;
}

}  // namespace platform::kernel
