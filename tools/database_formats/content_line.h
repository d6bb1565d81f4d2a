// content_line.h - one line of vCard or iCalendar: NAME;PARAMETER=VALUE:VALUE.
#pragma once

#include "database_formats/format_fault.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

struct Parameter {
    std::string name;  // capitals; "TYPE" for one that stands there without a name
    std::string value;
};

struct ContentLine {
    std::string name;  // capitals, without a group before it
    std::vector<Parameter> parameters;
    std::string value;       // as it stands: its commas, semicolons, line ends escaped
    std::size_t number = 0;  // of the file's line where it begins
    std::string fault = {};  // why the value can't be read as text; no matter to who doesn't want it
    bool guessed = false;    // the value's character set was
    bool binary = false;     // BASE64 that is no text: left out where one is wanted

    // The first parameter of that name; empty if there is none.
    [[nodiscard]] std::string_view parameter(std::string_view parameterName) const;
    // True if one of its types is this one, in capitals.
    [[nodiscard]] bool hasType(std::string_view type) const;
};

// A line that is unfolded already. Throws a FormatFault.
[[nodiscard]] ContentLine contentLineFrom(std::string_view text, std::size_t number);

// With its CR LF, folded where it has more than 75 bytes, never within a character.
void append(std::string& text, const ContentLine& line);

// Texts within a value. A line end of the text is CR LF, and "\n" in the value.
[[nodiscard]] std::string escaped(std::string_view text);
[[nodiscard]] std::string unescaped(std::string_view value);

// The parts of a value between separators that aren't escaped, each still escaped; what follows the last of `most`
// parts stays in it.
[[nodiscard]] std::vector<std::string_view> partsOf(std::string_view value, char separator, std::size_t most);

// Does a line's work; what is wrong there is told with the line's number.
template <class Work>
auto atLine(const ContentLine& line, Work work)
{
    try {
        return work();
    } catch (FormatFault& fault) {
        if (fault.line == 0)
            fault.line = line.number;
        throw;
    }
}

// Throws a FormatFault for a line whose value can't be read.
void demandText(const ContentLine& line);

[[nodiscard]] std::string inCapitals(std::string_view text);

}  // namespace database_formats
