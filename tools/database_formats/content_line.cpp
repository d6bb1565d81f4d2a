#include "content_line.h"

#include <algorithm>

namespace database_formats {

namespace {

constexpr std::size_t FoldedBytes = 75;
constexpr std::size_t MostParameters = 256;

bool isNameCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
           c == '.';
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Returns the offset where the parameter at `offset` ends. This is the offset of the first semicolon or colon that
// isn't quoted.
std::size_t endOfParameter(std::string_view text, std::size_t offset)
{
    for (bool quoted = false; offset < text.size(); ++offset) {
        if (text[offset] == '"')
            quoted = !quoted;
        else if (!quoted && (text[offset] == ';' || text[offset] == ':'))
            return offset;
    }
    throw FormatFault("the line has no colon, or a quote isn't closed");
}

Parameter parameterFrom(std::string_view text)
{
    const std::size_t equals = text.find('=');
    std::string value(equals == std::string_view::npos ? text : text.substr(equals + 1));
    std::erase(value, '"');
    if (equals != std::string_view::npos)
        return {inCapitals(text.substr(0, equals)), std::move(value)};
    const std::string word = inCapitals(value);
    const bool encoding = word == "QUOTED-PRINTABLE" || word == "BASE64" || word == "8BIT" || word == "7BIT";
    return {encoding ? "ENCODING" : "TYPE", std::move(value)};
}

}  // namespace

std::string_view ContentLine::parameter(std::string_view parameterName) const
{
    const auto found = std::ranges::find(parameters, parameterName, &Parameter::name);
    return found != parameters.end() ? std::string_view(found->value) : std::string_view();
}

bool ContentLine::hasType(std::string_view type) const
{
    return std::ranges::any_of(parameters, [type](const Parameter& parameter) {
        const std::string types = "," + inCapitals(parameter.value) + ",";
        return parameter.name == "TYPE" && types.find("," + std::string(type) + ",") != std::string::npos;
    });
}

ContentLine contentLineFrom(std::string_view text, std::size_t number)
{
    ContentLine line;
    line.number = number;
    const std::size_t nameEnd =
        static_cast<std::size_t>(std::ranges::find_if_not(text, isNameCharacter) - text.begin());
    const std::string_view grouped = text.substr(0, nameEnd);
    line.name = inCapitals(grouped.substr(grouped.rfind('.') + 1));
    if (line.name.empty() || nameEnd == text.size() || (text[nameEnd] != ';' && text[nameEnd] != ':'))
        throw FormatFault("the line isn't a name, a colon and a value");
    std::size_t at = nameEnd;
    while (text[at] == ';') {
        const std::size_t end = endOfParameter(text, at + 1);
        if (line.parameters.size() == MostParameters)
            throw FormatFault("the line has more than 256 parameters");
        line.parameters.push_back(parameterFrom(text.substr(at + 1, end - at - 1)));
        at = end;
    }
    line.value = text.substr(at + 1);
    return line;
}

void append(std::string& text, const ContentLine& line)
{
    std::string whole = line.name;
    for (const Parameter& parameter : line.parameters)
        whole += ";" + parameter.name + "=" + parameter.value;
    whole += ":" + line.value;
    // The space at the beginning of a continuation line is one of its 75 bytes.
    for (std::size_t at = 0, room = FoldedBytes; at < whole.size(); room = FoldedBytes - 1) {
        std::size_t end = std::min(at + room, whole.size());
        // A UTF-8 character has at most three continuation bytes. A text that isn't UTF-8 can have more in a row.
        for (int back = 0; back < 3 && end < whole.size() && isContinuation(whole[end]); ++back)
            --end;
        text += at == 0 ? "" : " ";
        text.append(whole, at, end - at);
        text += "\r\n";
        at = end;
    }
}

std::string escaped(std::string_view text)
{
    std::string value;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool control = static_cast<unsigned char>(text[at]) < 0x20 || text[at] == 0x7F;
        if ((control && text[at] != '\r' && text[at] != '\n' && text[at] != '\t') || text.substr(at, 2) == "\r\n")
            continue;
        if (text[at] == '\\' || text[at] == ',' || text[at] == ';')
            value += '\\';
        if (text[at] == '\n')
            value += "\\n";
        else
            value += text[at] == '\r' ? ' ' : text[at];  // a line can't hold a CR alone
    }
    return value;
}

std::string unescaped(std::string_view value)
{
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const char next = value[at] == '\\' && at + 1 < value.size() ? value[at + 1] : '\0';
        if (next == 'n' || next == 'N')
            text += "\r\n";
        else if (next == '\\' || next == ',' || next == ';' || next == ':' || next == '"')
            text += next;
        else {
            if (value[at] == '\n' && !text.ends_with('\r'))  // a LF alone comes from decoded quoted-printable
                text += '\r';
            text += value[at];
            continue;
        }
        ++at;
    }
    return text;
}

std::vector<std::string_view> partsOf(std::string_view value, char separator, std::size_t most)
{
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < value.size() && parts.size() + 1 < most; ++at) {
        if (value[at] == '\\')
            ++at;
        else if (value[at] == separator) {
            parts.push_back(value.substr(begin, at - begin));
            begin = at + 1;
        }
    }
    parts.push_back(value.substr(begin));
    return parts;
}

void requireText(const ContentLine& line)
{
    if (line.fault.empty())
        return;
    FormatFault fault(line.fault);
    fault.line = line.number;
    throw fault;
}

std::string_view trimmed(std::string_view value)
{
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    return value.substr(0, value.find_last_not_of(" \t") + 1);
}

std::string inCapitals(std::string_view text)
{
    std::string capitals(text);
    std::ranges::transform(capitals, capitals.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return capitals;
}

}  // namespace database_formats
