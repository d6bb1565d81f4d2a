// edit_text.h - functions for the text and the selection of an edit control. They need no window.
//
// A surrogate pair is treated as one character, and so is a \r\n. Such a character has two UTF-16 units, and the caret
// is never between them.
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
// These functions return the offset of the same column in the line above or below. If that line is shorter, they return
// its end. If there is no such line, they return `at`.
std::size_t lineAbove(std::u16string_view text, std::size_t at);
std::size_t lineBelow(std::u16string_view text, std::size_t at);

// Converts typed text to the text that an edit holds. Every kind of line break becomes \r\n, or is removed for a
// single-line edit. The other ASCII control characters are removed, except tabs in a multi-line edit.
std::u16string fitToEdit(std::u16string_view typed, bool multiLine);

// Returns the first UTF-16 units of the text, at most `room` of them. A character that doesn't fit as a whole is left
// out.
std::u16string_view cutToRoom(std::u16string_view text, std::size_t room);

}  // namespace platform::window
