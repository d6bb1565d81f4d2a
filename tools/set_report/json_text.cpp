#include "json_text.h"

namespace set_report {

namespace {

// Returns the escape for the character at the beginning of `from`, or an empty text if the character needs none. In
// JSON, the characters that need an escape occur only inside strings, where escapes are allowed. `from` is a text and
// not a single byte, because the separators U+2028 and U+2029 have three bytes each.
std::string_view escapeOf(std::string_view from)
{
    switch (from[0]) {
    case '<':
        return "\\u003c";
    case '>':
        return "\\u003e";
    case '&':
        return "\\u0026";
    default:
        return from.starts_with("\xE2\x80\xA8") ? "\\u2028" : from.starts_with("\xE2\x80\xA9") ? "\\u2029" : "";
    }
}

}  // namespace

std::string jsonText(const nlohmann::ordered_json& value)
{
    std::string plain = value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    if (plain.find_first_of("<>&\xE2") == std::string::npos)
        return plain;
    std::string safe;
    for (std::size_t at = 0; at < plain.size(); at++) {
        const std::string_view escape = escapeOf(std::string_view(plain).substr(at));
        if (escape.empty())
            safe += plain[at];
        else
            safe += escape;
        at += escape.starts_with("\\u2") ? 2 : 0;  // the other two bytes of the separator
    }
    return safe;
}

std::string jsonString(std::string_view text)
{
    return jsonText(std::string(text));
}

}  // namespace set_report
