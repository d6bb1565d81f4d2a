// pattern.cpp - how a script sees a text, and the patterns that it holds against texts.

#include "pattern.h"

namespace platform::headless {

namespace {

// Units of the character that begins at `at`: two for a surrogate pair.
std::size_t unitsAt(std::u16string_view text, std::size_t at)
{
    const bool first = text[at] >= 0xD800 && text[at] <= 0xDBFF;
    return first && at + 1 < text.size() && text[at + 1] >= 0xDC00 && text[at + 1] <= 0xDFFF ? 2 : 1;
}

}  // namespace

std::u16string onOneLine(std::u16string_view text)
{
    std::u16string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != u'\r' && text[i] != u'\n') {
            line.push_back(text[i]);
            continue;
        }
        line += u"\\n";
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
    }
    return line;
}

bool matches(std::u16string_view pattern, std::u16string_view text)
{
    std::size_t p = 0;
    std::size_t t = 0;
    // Where to go on if the rest doesn't match: behind the last *, which takes one character more each time.
    std::size_t afterStar = std::u16string_view::npos;
    std::size_t starTakes = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            afterStar = ++p;
            starTakes = t;
        } else if (p < pattern.size() && pattern[p] == u'?') {
            ++p;
            t += unitsAt(text, t);
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (afterStar != std::u16string_view::npos) {
            p = afterStar;
            starTakes += unitsAt(text, starTakes);
            t = starTakes;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

}  // namespace platform::headless
