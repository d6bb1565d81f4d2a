#include "json_lines.h"

#include "database_formats/record.h"
#include "property_json.h"

#include "text/host_name.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace database_formats {

namespace {

using Json = nlohmann::ordered_json;

// Limits on the memory that a parsed line takes. No line with a database or a record is nested deeper than
// DeepestNesting. No record of a device has more values than MostValues.
constexpr std::size_t DeepestNesting = 4;
constexpr std::size_t MostKeys = 16;  // the most keys of an object. The time to find a key grows with their number.
constexpr std::size_t MostValues = std::size_t{4} * 1024 * 1024;

// Throws a FormatFault for a line that exceeds a limit. The function counts brackets, commas and colons before the line
// is parsed. The parser's own callback would be too slow: its time grows with the square of the length of an array.
void requireWithinLimits(std::string_view line)
{
    std::size_t values = 0;
    std::size_t depth = 0;
    std::array<std::size_t, DeepestNesting + 1> keys{};  // number of keys of the open object of each depth
    bool quoted = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        const bool opens = c == '{' || c == '[';
        if (c == '"')
            quoted = !quoted;
        if (quoted) {
            at += c == '\\' ? 1 : 0;
            continue;
        }
        values += opens || c == ',' ? 1 : 0;
        if ((opens && depth == DeepestNesting) || values > MostValues)
            throw FormatFault("this is neither a database nor a record");
        if (opens)
            keys[++depth] = 0;
        else if ((c == '}' || c == ']') && depth > 0)
            --depth;
        else if (c == ':' && ++keys[depth] > MostKeys)
            throw FormatFault("an object has more than 16 keys");
    }
}

Json parsed(const std::string& line)
{
    requireWithinLimits(line);
    return Json::parse(line);
}

DWORD numberIn(const Json& object, const char* field)
{
    if (!object.is_object() || !object.contains(field) || !object[field].is_number_unsigned() ||
        object[field].get<std::uint64_t>() > 0xFFFFFFFF)
        throw FormatFault(std::string("\"") + field + "\" isn't a number of 32 bits");
    return object[field].get<DWORD>();
}

DatabaseHead headFrom(const Json& json)
{
    if (!json["database"].is_string() || !json.contains("sort") || !json["sort"].is_array())
        throw FormatFault("a database lacks its name or its \"sort\"");
    DatabaseHead head{
        platform::text::fromUtf8(json["database"].get_ref<const std::string&>()), numberIn(json, "type"), {}};
    for (const Json& order : json["sort"])
        head.sort.push_back({numberIn(order, "property"), numberIn(order, "flags")});
    return head;
}

Record recordFrom(const Json& properties)
{
    if (properties.empty())
        throw FormatFault("a record has no properties");
    Record record;
    for (const Json& property : properties)
        addTo(record, property);
    return record;
}

}  // namespace

void JsonLinesWriter::begin(const DatabaseHead& head)
{
    Json json{{"database", platform::text::toUtf8(head.name)}, {"type", head.type}};
    Json& sort = json["sort"] = Json::array();
    // For a database without sort orders, `head.sort` has a single element, with property 0 and without flags.
    const bool hasNone = head.sort.size() == 1 && head.sort.front().propid == 0 && head.sort.front().dwFlags == 0;
    for (const SORTORDERSPEC& order : head.sort)
        if (!hasNone)
            sort.push_back({{"property", order.propid}, {"flags", order.dwFlags}});
    out_ << json.dump() << '\n';
}

void JsonLinesWriter::add(std::span<const CEPROPVAL> properties)
{
    out_ << R"({"record":[)";
    const char* comma = "";
    for (const CEPROPVAL& property : properties) {
        out_ << std::exchange(comma, ",");
        writeJson(out_, property);
    }
    out_ << "]}\n";
}

void readJsonLines(LineReader& lines, DatabaseTarget& target)
{
    std::optional<std::size_t> database;
    for (std::string line; lines.next(line, LongestRecord);) {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        try {
            const Json json = parsed(line);
            if (json.is_object() && json.contains("database"))
                database = target.begin(headFrom(json));
            else if (!json.is_object() || !json.contains("record") || !json["record"].is_array())
                throw FormatFault("this is neither a database nor a record");
            else if (!database)
                throw FormatFault("there is no database before the record");
            else
                target.add(*database, recordFrom(json["record"]).properties());
        } catch (const nlohmann::json::exception&) {
            throw FormatFault("this isn't JSON");
        }
    }
}

}  // namespace database_formats
