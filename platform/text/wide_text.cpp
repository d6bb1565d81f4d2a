// Implements _wtol and those calls of ce/text.h that measure, copy and compare texts.
#include "ce/text.h"

#include "text/case_folding.h"
#include "text/utf.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

std::size_t wcslen(const WCHAR* text)
{
    return std::char_traits<WCHAR>::length(text);
}

WCHAR* wcsncpy(WCHAR* out, const WCHAR* text, std::size_t count)
{
    std::size_t at = 0;
    for (; at < count && text[at] != 0; ++at)
        out[at] = text[at];
    std::fill(out + at, out + count, WCHAR{0});
    return out;
}

std::size_t CopyText(WCHAR* out, std::size_t capacity, const WCHAR* text)
{
    if (capacity == 0)
        return 0;
    std::size_t length = 0;
    while (length + 1 < capacity && text[length] != 0)
        ++length;
    length = platform::text::wholeUnits({text, length + 1}, length);
    std::memmove(out, text, length * sizeof(WCHAR));
    out[length] = 0;
    return length;
}

int lstrcmpW(const WCHAR* left, const WCHAR* right)
{
    while (*left != 0 && *left == *right) {
        ++left;
        ++right;
    }
    return *left - *right;
}

int lstrcmpiW(const WCHAR* left, const WCHAR* right)
{
    using platform::text::foldCase;
    while (*left != 0 && (*left == *right || foldCase(*left) == foldCase(*right))) {
        ++left;
        ++right;
    }
    return foldCase(*left) - foldCase(*right);
}

LONG _wtol(const WCHAR* text)
{
    constexpr std::int64_t largest = std::numeric_limits<LONG>::max();
    while (*text == u' ' || (*text >= u'\t' && *text <= u'\r'))
        ++text;
    const bool negative = *text == u'-';
    if (*text == u'-' || *text == u'+')
        ++text;
    std::int64_t value = 0;
    for (; *text >= u'0' && *text <= u'9'; ++text)
        value = std::min(value * 10 + (*text - u'0'), largest + 1);
    return static_cast<LONG>(negative ? -value : std::min(value, largest));
}
