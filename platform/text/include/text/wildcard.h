// wildcard.h - matches patterns with the wildcards * and ?.
#pragma once

#include <string_view>

namespace platform::text {

enum class Case { Counts, Ignored };

// Returns whether the pattern matches all of `text`. `*` matches any number of characters, also none. `?` matches one
// character, which may be a surrogate pair. The time is at most proportional to the product of both lengths.
bool matchesWildcards(std::u16string_view text, std::u16string_view pattern, Case rule);

}  // namespace platform::text
