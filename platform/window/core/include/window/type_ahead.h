// type_ahead.h - the text that the user types to find a row of a list or an item of a tree.
#pragma once

#include "window/core.h"

#include <string>
#include <string_view>

namespace platform::window {

class TypeAhead {
public:
    // What is searched for if the character is typed now. After a pause of a second the text begins anew.
    std::u16string with(char16_t character) const;
    void note(std::u16string typed);
    void end() { typed_.clear(); }
    bool inProgress() const { return !typed_.empty() && Clock::now() - typedAt_ <= TypingPause; }

private:
    static constexpr Clock::duration TypingPause = std::chrono::seconds(1);

    std::u16string typed_;
    Clock::time_point typedAt_;
};

// Is it the key of a character that may continue the text? Any other key ends it.
inline bool typesCharacter(WPARAM key)
{
    return key == VK_SPACE || (key >= u'0' && key <= u'9') || (key >= u'A' && key <= u'Z');
}

// Typing the same letter again means the next row with that letter: the text is that letter, and the search begins
// after the current row.
bool isOneLetter(std::u16string_view typed);

// Without regard to case.
bool beginsWith(std::u16string_view text, std::u16string_view start);
bool contains(std::u16string_view text, std::u16string_view part);

}  // namespace platform::window
