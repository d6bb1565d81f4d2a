// type_ahead.h - the text that the user types to find a row of a list or an item of a tree.
#pragma once

#include "window/core.h"

#include <string>
#include <string_view>

namespace platform::window {

class TypeAhead {
public:
    // Returns the text to search for if the user types `character` now. If the user last typed more than a second ago,
    // this text is `character` alone.
    std::u16string with(char16_t character) const;
    void note(std::u16string typed);
    void end() { typed_.clear(); }
    bool inProgress() const { return !typed_.empty() && Clock::now() - typedAt_ <= TypingPause; }

private:
    static constexpr Clock::duration TypingPause = std::chrono::seconds(1);

    std::u16string typed_;
    Clock::time_point typedAt_;
};

// Is `key` the key of a character that may continue the typed text? Any other key ends the text.
inline bool typesCharacter(WPARAM key)
{
    return key == VK_SPACE || (key >= u'0' && key <= u'9') || (key >= u'A' && key <= u'Z');
}

// Does the text consist of one letter, or of the same letter repeated? In that case the user wants the next row that
// begins with the letter. So the caller searches for the letter alone, and the search begins after the current row.
bool isOneLetter(std::u16string_view typed);

// Both functions ignore case.
bool beginsWith(std::u16string_view text, std::u16string_view start);
bool contains(std::u16string_view text, std::u16string_view part);

}  // namespace platform::window
