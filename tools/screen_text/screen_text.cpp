#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <algorithm>
#include <cstdio>

namespace screen_text {

namespace {

bool isHarmful(char16_t unit)
{
    const bool control = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    const bool direction = unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
                           (unit >= 0x2066 && unit <= 0x2069);
    return control || direction;
}

}  // namespace

std::string onScreen(std::u16string_view text)
{
    std::u16string shown;
    for (const char16_t unit : text) {
        if (!isHarmful(unit)) {
            shown += unit;
            continue;
        }
        char escape[16];
        (void)std::snprintf(escape, sizeof escape, "<U+%04X>", static_cast<unsigned>(unit));
        shown += platform::text::fromUtf8(escape);
    }
    return platform::text::toUtf8(shown);
}

std::string onScreen(std::string_view text)
{
    return onScreen(platform::text::fromUtf8(text));
}

std::string linesOnScreen(std::u16string_view text, std::string_view indent)
{
    std::string lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u'\n'), text.size());
        std::u16string_view line = text.substr(0, end);
        if (line.ends_with(u'\r'))
            line.remove_suffix(1);
        lines.append(indent).append(onScreen(line)).append("\n");
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string counted(std::uint64_t number, std::string_view thing)
{
    return std::to_string(number) + " " + std::string(thing) + (number == 1 ? "" : "s");
}

}  // namespace screen_text
