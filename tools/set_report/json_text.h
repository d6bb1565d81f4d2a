// json_text.h - functions that convert values to JSON. The JSON is written into a script element of the page.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace set_report {

// Returns the value as JSON in one line. The characters <, >, &, U+2028 and U+2029 are escaped. So no text in the value
// can end the script element or begin another one, and none can end a line of JavaScript. Bytes that aren't UTF-8 are
// replaced by U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

// Returns the text as a JSON string, with the same escapes and replacements as jsonText().
std::string jsonString(std::string_view text);

}  // namespace set_report
