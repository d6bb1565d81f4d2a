// json_text.h - JSON for a script element of a page.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace set_report {

// The value as JSON in one line. No text in it can end the script element, begin another one or be a line end of
// JavaScript: < > & U+2028 and U+2029 are escaped. Bytes that aren't UTF-8 become U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

// The text as a JSON string, in the same way.
std::string jsonString(std::string_view text);

}  // namespace set_report
