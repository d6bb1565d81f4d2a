#include "pattern.h"

#include "text/wildcard.h"

namespace platform::headless {

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
    return text::matchesWildcards(text, pattern, text::Case::Counts);
}

}  // namespace platform::headless
