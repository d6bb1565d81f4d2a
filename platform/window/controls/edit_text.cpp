#include "edit_text.h"

#include "text/utf.h"

#include <algorithm>

namespace platform::window {

namespace {

// Is `at` inside a surrogate pair or a line break?
bool isInside(std::u16string_view text, std::size_t at)
{
    if (at == 0 || at >= text.size())
        return false;
    return (text[at - 1] == u'\r' && text[at] == u'\n') ||
           (text::isHighSurrogate(text[at - 1]) && text::isLowSurrogate(text[at]));
}

}  // namespace

std::size_t previousCharacter(std::u16string_view text, std::size_t at)
{
    if (at == 0)
        return 0;
    return isInside(text, at - 1) ? at - 2 : at - 1;
}

std::size_t nextCharacter(std::u16string_view text, std::size_t at)
{
    if (at >= text.size())
        return text.size();
    return isInside(text, at + 1) ? at + 2 : at + 1;
}

std::size_t lineStart(std::u16string_view text, std::size_t at)
{
    const std::size_t line = text.substr(0, at).rfind(u"\r\n");
    return line == std::u16string_view::npos ? 0 : line + 2;
}

std::size_t lineEnd(std::u16string_view text, std::size_t at)
{
    const std::size_t line = text.find(u"\r\n", at);
    return line == std::u16string_view::npos ? text.size() : line;
}

namespace {

std::size_t columnIn(std::u16string_view text, std::size_t start, std::size_t column)
{
    const std::size_t at = std::min(start + column, lineEnd(text, start));
    return isInside(text, at) ? at - 1 : at;
}

}  // namespace

std::size_t lineAbove(std::u16string_view text, std::size_t at)
{
    const std::size_t start = lineStart(text, at);
    return start == 0 ? at : columnIn(text, lineStart(text, start - 2), at - start);
}

std::size_t lineBelow(std::u16string_view text, std::size_t at)
{
    const std::size_t end = lineEnd(text, at);
    return end == text.size() ? at : columnIn(text, end + 2, at - lineStart(text, at));
}

std::u16string fitToEdit(std::u16string_view typed, bool multiLine)
{
    std::u16string fitted;
    fitted.reserve(typed.size());
    for (std::size_t at = 0; at < typed.size(); at = nextCharacter(typed, at)) {
        const char16_t character = typed[at];
        if (character == u'\r' || character == u'\n') {
            if (multiLine)
                fitted += u"\r\n";
        } else if (character >= u' ' ? character != 0x7F : (character == u'\t' && multiLine)) {
            fitted += typed.substr(at, nextCharacter(typed, at) - at);
        }
    }
    return fitted;
}

std::u16string_view cutToRoom(std::u16string_view text, std::size_t room)
{
    if (text.size() <= room)
        return text;
    return text.substr(0, isInside(text, room) ? room - 1 : room);
}

}  // namespace platform::window
