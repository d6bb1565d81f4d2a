// wildcard.h - patterns in which * and ? stand for other characters.
#pragma once

#include <string_view>

namespace platform::text {

enum class Case { Counts, Ignored };

// Does the pattern match all of `text`? `*` matches any run of characters, also an empty one, and `?` one character, be
// it a surrogate pair. The time is at most proportional to the product of both lengths.
bool matchesWildcards(std::u16string_view text, std::u16string_view pattern, Case rule);

}  // namespace platform::text
