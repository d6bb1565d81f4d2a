#include "window/type_ahead.h"

#include "text/case_folding.h"

#include <algorithm>

namespace platform::window {

std::u16string TypeAhead::with(char16_t character) const
{
    return inProgress() ? typed_ + character : std::u16string(1, character);
}

void TypeAhead::note(std::u16string typed)
{
    typed_ = std::move(typed);
    typedAt_ = Clock::now();
}

bool isOneLetter(std::u16string_view typed)
{
    return typed.find_first_not_of(typed.front()) == std::u16string_view::npos;
}

bool beginsWith(std::u16string_view text, std::u16string_view start)
{
    return text::compareWithoutCase(text.substr(0, start.size()), start) == 0;
}

bool contains(std::u16string_view text, std::u16string_view part)
{
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char16_t a, char16_t b) { return text::foldCase(a) == text::foldCase(b); }) != text.end();
}

}  // namespace platform::window
