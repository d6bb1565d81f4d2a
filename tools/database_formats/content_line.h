// content_line.h - one line of vCard or iCalendar: NAME;PARAMETER=VALUE:VALUE.
#pragma once

#include "database_formats/format_fault.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

struct Parameter {
    std::string name;  // in capitals. If the file has only a value: "ENCODING" for an encoding, otherwise "TYPE".
    std::string value;
};

struct ContentLine {
    std::string name;  // in capitals, without a group such as "item1." before it
    std::vector<Parameter> parameters;
    std::string value;       // still escaped, see unescaped() below
    std::size_t number = 0;  // line number in the file where this line begins
    std::string fault = {};  // why the value can't be read as text. Ignored unless the line is used.
    bool guessed = false;    // the character set of the value is a guess
    bool leftOut = false;    // `fault` is set, and a conversion of the whole file to UTF-8 can't remove the fault

    // Returns the value of the first parameter with this name, or an empty text if there is none.
    std::string_view parameter(std::string_view parameterName) const;
    // Returns whether a parameter TYPE contains `type`, which must be in capitals.
    bool hasType(std::string_view type) const;
};

// Parses a line that has been unfolded. `number` is its line number in the file. Throws a FormatFault if the line
// isn't a name, parameters, a colon and a value, or if it has more than 256 parameters.
ContentLine contentLineFrom(std::string_view text, std::size_t number);

// Appends the line with CR LF. It is folded after 75 bytes, but never within a character.
void append(std::string& text, const ContentLine& line);

// escaped() converts a text to a value as it is written in a file, and unescaped() converts a value back. A line end is
// CR LF in the text, and a backslash and an n in the value. escaped() replaces a CR without LF by a space, and drops
// all other control characters except tabs.
std::string escaped(std::string_view text);
std::string unescaped(std::string_view value);

// Splits a value at the separators that aren't escaped, into at most `most` parts. The last part contains the rest. The
// parts are still escaped.
std::vector<std::string_view> partsOf(std::string_view value, char separator, std::size_t most);

// Calls `work` and returns its result. If `work` throws a FormatFault without a line number, the fault gets the number
// of `line`.
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

// If the line has a `fault`, throws it as a FormatFault with the number of the line.
void requireText(const ContentLine& line);

std::string inCapitals(std::string_view text);

// Returns the value without blanks at its beginning and end.
std::string_view trimmed(std::string_view value);

}  // namespace database_formats
