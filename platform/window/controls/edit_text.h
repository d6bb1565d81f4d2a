// edit_text.h - the text of an edit control and its selection, without window or messages.
//
// A surrogate pair and a \r\n count as one character: the caret is never inside.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform::window {

struct EditSelection {
    std::size_t anchor = 0;
    std::size_t caret = 0;

    std::size_t start() const { return anchor < caret ? anchor : caret; }
    std::size_t end() const { return anchor < caret ? caret : anchor; }
    friend bool operator==(const EditSelection&, const EditSelection&) = default;
};

std::size_t previousCharacter(std::u16string_view text, std::size_t at);
std::size_t nextCharacter(std::u16string_view text, std::size_t at);
std::size_t lineStart(std::u16string_view text, std::size_t at);
std::size_t lineEnd(std::u16string_view text, std::size_t at);
// The same column one line up or down, or the end of that line if it is shorter. `at` itself on the first or last line.
std::size_t lineAbove(std::u16string_view text, std::size_t at);
std::size_t lineBelow(std::u16string_view text, std::size_t at);

// Typed text as an edit holds it. Every kind of line break becomes \r\n, or is removed for a single line. Other control
// characters are removed, except tabs in a multi-line edit.
std::u16string fitToEdit(std::u16string_view typed, bool multiLine);

// At most `room` UTF-16 units, cut before a character that doesn't fit as a whole.
std::u16string_view cutToRoom(std::u16string_view text, std::size_t room);

}  // namespace platform::window
