// name_pattern.cpp - see name_pattern.h
#include "name_pattern.h"

#include "text/case_folding.h"

#include <cstddef>

namespace platform::file {

namespace {

// Code units of the character there: a surrogate pair is one character to `?`.
std::size_t characterUnits(std::u16string_view name, std::size_t place)
{
    const bool isPair =
        (name[place] & 0xFC00) == 0xD800 && place + 1 < name.size() && (name[place + 1] & 0xFC00) == 0xDC00;
    return isPair ? 2 : 1;
}

}  // namespace

bool matchesPattern(std::u16string_view name, std::u16string_view pattern)
{
    if (pattern == u"*" || pattern == u"*.*")
        return true;
    // On a mismatch only the last star has to take more, so the time is bounded by both lengths' product.
    constexpr std::size_t None = static_cast<std::size_t>(-1);
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t afterStar = None;
    std::size_t starTakenTo = 0;
    while (at < name.size()) {
        if (in < pattern.size() && pattern[in] == u'*') {
            afterStar = ++in;
            starTakenTo = at;
        } else if (in < pattern.size() && pattern[in] == u'?') {
            at += characterUnits(name, at);
            ++in;
        } else if (in < pattern.size() && text::foldCase(pattern[in]) == text::foldCase(name[at])) {
            ++at;
            ++in;
        } else if (afterStar != None) {
            starTakenTo += characterUnits(name, starTakenTo);
            at = starTakenTo;
            in = afterStar;
        } else {
            return false;
        }
    }
    while (in < pattern.size() && pattern[in] == u'*')
        ++in;
    return in == pattern.size();
}

}  // namespace platform::file
