#include "text/wildcard.h"

#include "text/case_folding.h"
#include "text/utf.h"

#include <cstddef>

namespace platform::text {

bool matchesWildcards(std::u16string_view text, std::u16string_view pattern, Case rule)
{
    constexpr std::size_t None = std::u16string_view::npos;
    const auto isSame = [rule](char16_t left, char16_t right) {
        return left == right || (rule == Case::Ignored && foldCase(left) == foldCase(right));
    };
    std::size_t at = 0;
    std::size_t in = 0;
    // After a mismatch only the last star is tried with a longer match. Earlier stars can keep their shortest match.
    std::size_t afterStar = None;
    std::size_t starEnd = 0;  // the end of the last star's match
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == u'*') {
            afterStar = ++in;
            starEnd = at;
        } else if (in < pattern.size() && pattern[in] == u'?') {
            at += characterUnits(text, at);
            ++in;
        } else if (in < pattern.size() && isSame(pattern[in], text[at])) {
            ++at;
            ++in;
        } else if (afterStar != None) {
            starEnd += characterUnits(text, starEnd);
            at = starEnd;
            in = afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', in) == None;
}

}  // namespace platform::text
