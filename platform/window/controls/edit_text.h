// edit_text.h - the text of an edit control and its selection, without window or messages.
//
// A surrogate pair and a \r\n are one character to the caret: it never stands inside.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform::window {

struct EditSelection {
    std::size_t anchor = 0;
    std::size_t caret = 0;

    [[nodiscard]] std::size_t start() const { return anchor < caret ? anchor : caret; }
    [[nodiscard]] std::size_t end() const { return anchor < caret ? caret : anchor; }
    friend bool operator==(const EditSelection&, const EditSelection&) = default;
};

[[nodiscard]] std::size_t previousCharacter(std::u16string_view text, std::size_t at);
[[nodiscard]] std::size_t nextCharacter(std::u16string_view text, std::size_t at);
[[nodiscard]] std::size_t lineStart(std::u16string_view text, std::size_t at);
[[nodiscard]] std::size_t lineEnd(std::u16string_view text, std::size_t at);
// The same column one line up or down, or the line's end; `at` itself on the first or last line.
[[nodiscard]] std::size_t lineAbove(std::u16string_view text, std::size_t at);
[[nodiscard]] std::size_t lineBelow(std::u16string_view text, std::size_t at);

// What of a typed text an edit holds: every kind of line break becomes \r\n, or nothing in a single line;
// other control characters but the tab of a multi-line edit go.
[[nodiscard]] std::u16string fitToEdit(std::u16string_view typed, bool multiLine);

// At most `room` characters, cut at a whole one.
[[nodiscard]] std::u16string_view cutToRoom(std::u16string_view text, std::size_t room);

}  // namespace platform::window
