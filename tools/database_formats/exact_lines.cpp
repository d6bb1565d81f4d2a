#include "exact_lines.h"

#include "database_formats/format_fault.h"
#include "database_formats/value_text.h"
#include "hex_digits.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

namespace database_formats {

namespace {

constexpr std::string_view PropertyLine = "X-QUILLBOX-PROPERTY";
constexpr std::string_view WithoutLine = "X-QUILLBOX-WITHOUT";
constexpr std::string_view OrderLine = "X-QUILLBOX-ORDER";

std::vector<CEPROPID> idsIn(std::string_view value)
{
    std::vector<CEPROPID> ids;
    for (const std::string_view id : partsOf(value, ',', 0xFFFF))
        ids.push_back(idOf(id));
    return ids;
}

std::string listOf(std::span<const CEPROPID> ids)
{
    std::string list;
    for (const CEPROPID id : ids)
        list += (list.empty() ? "" : ",") + hexadecimal(id, 8);
    return list;
}

void addProperty(Record& record, const ContentLine& line)
{
    const std::string_view digits = line.parameter("FLAGS");
    const WORD flags = digits.empty() ? WORD{0} : flagsFrom(digits);
    addFromText(record, idOf(line.parameter("ID")), flags, unescaped(line.value));
}

// The content of the extension lines of a component.
struct ExtensionLines {
    Record properties;
    std::unordered_set<CEPROPID> without;
    std::vector<CEPROPID> order;
};

ExtensionLines extensionLinesOf(const Component& component)
{
    ExtensionLines extension;
    for (const ContentLine& line : component.lines) {
        if (line.name.starts_with(ExactPrefix))
            requireText(line);
        atLine(line, [&] {
            if (line.name == PropertyLine)
                addProperty(extension.properties, line);
            else if (line.name == OrderLine)
                extension.order = idsIn(line.value);
            else if (line.name == WithoutLine) {
                const std::vector<CEPROPID> ids = idsIn(line.value);
                extension.without.insert(ids.begin(), ids.end());
            }
        });
    }
    return extension;
}

// False for the 0 that reading gives if a line is missing. Any other number was put into the file by another program,
// so it counts even if the record had no such property.
bool isNotDefault(const CEPROPVAL& property)
{
    return LOWORD(property.propid) != CEVT_LPWSTR && valueText(property, Controls::Kept) != "0";
}

// The properties of the standard lines and of the extension lines, in the order that these give. If both have a
// property, that of the extension lines counts.
std::vector<CEPROPVAL> merged(const Record& standard, const ExtensionLines& extension)
{
    std::vector<CEPROPVAL> all;
    std::unordered_map<CEPROPID, std::size_t> positions;  // in `all`
    const auto put = [&](const CEPROPVAL& property) {
        const auto [position, isNew] = positions.emplace(property.propid, all.size());
        if (isNew)
            all.push_back(property);
        else
            all[position->second] = property;
    };
    for (const CEPROPVAL& property : standard.properties())
        if (!extension.without.contains(property.propid) || isNotDefault(property))
            put(property);
    for (const CEPROPVAL& property : extension.properties.properties())
        put(property);
    if (all.size() > 0xFFFF)  // the largest record has no room for the UID that it got when it was written
        std::erase_if(all, [](const CEPROPVAL& property) { return property.propid == personal::Identifier; });
    std::unordered_map<CEPROPID, std::size_t> ranks;
    for (const CEPROPID id : extension.order)
        ranks.emplace(id, ranks.size());
    // A property that isn't in the order was added to the file by another program. It goes to the end.
    std::ranges::stable_sort(all, {}, [&ranks](const CEPROPVAL& property) {
        const auto rank = ranks.find(property.propid);
        return rank != ranks.end() ? rank->second : ranks.size();
    });
    return all;
}

bool isSame(const CEPROPVAL& left, const CEPROPVAL& right)
{
    return left.propid == right.propid && left.wFlags == right.wFlags &&
           valueText(left, Controls::Kept) == valueText(right, Controls::Kept);
}

// Adds the extension lines for the differences between the wanted properties and those that the standard lines give.
void addDifferences(Component& component, const Record& standard, std::span<const CEPROPVAL> wanted)
{
    std::unordered_map<CEPROPID, const CEPROPVAL*> readBack;
    for (const CEPROPVAL& property : standard.properties())
        readBack.emplace(property.propid, &property);
    for (const CEPROPVAL& property : wanted) {
        const auto found = readBack.find(property.propid);
        const bool same = found != readBack.end() && isSame(*found->second, property);
        if (found != readBack.end())
            readBack.erase(found);
        if (same)
            continue;
        std::vector<Parameter> parameters{{"ID", hexadecimal(property.propid, 8)}};
        if (property.wFlags != 0)
            parameters.push_back({"FLAGS", std::to_string(property.wFlags)});
        component.add(std::string(PropertyLine), escaped(valueText(property, Controls::Coded)), std::move(parameters));
    }
    std::vector<CEPROPID> without;
    without.reserve(readBack.size());
    for (const auto& [id, property] : readBack)
        without.push_back(id);
    std::ranges::sort(without);
    if (!without.empty())
        component.add(std::string(WithoutLine), listOf(without));
}

std::vector<CEPROPID> idsOf(std::span<const CEPROPVAL> properties)
{
    std::vector<CEPROPID> ids(properties.size());
    std::ranges::transform(properties, ids.begin(), &CEPROPVAL::propid);
    return ids;
}

// The component as a reader of the file gets it.
Component readBackFrom(const std::string& text)
{
    std::istringstream in(text);
    LineReader lines(in);
    auto component = ComponentReader(lines, "").next();
    if (!component)
        throw FormatFault("a record can't be written");
    return std::move(*component);
}

std::string textOf(const Component& component)
{
    std::string text;
    append(text, component);
    return text;
}

}  // namespace

Record exactRecord(const Component& component, const StandardReading& read, LeftOut& leftOut)
{
    const Record standard = read(component, leftOut);
    const ExtensionLines extension = extensionLinesOf(component);
    Record record;
    for (const CEPROPVAL& property : merged(standard, extension))
        record.addCopy(property);
    return record;
}

std::string exactText(Component component, const StandardReading& read, std::span<const CEPROPVAL> properties)
{
    const std::vector<CEPROPID> order = idsOf(properties);
    if (std::unordered_set(order.begin(), order.end()).size() < order.size())
        throw FormatFault("a record has a property twice");
    try {
        LeftOut ignored;
        const bool identified = std::ranges::find(order, personal::Identifier) != order.end();
        const Record readBack = read(readBackFrom(textOf(component)), ignored);
        Record standard;
        for (const CEPROPVAL& property : readBack.properties())
            if (property.propid != personal::Identifier || identified)  // otherwise the UID was made for the export
                standard.addCopy(property);
        addDifferences(component, standard, properties);
        if (idsOf(merged(standard, extensionLinesOf(component))) != order)
            component.add(std::string(OrderLine), listOf(order));
        std::string text = textOf(component);
        (void)readBackFrom(text);  // throws if the text exceeds a limit of the reader
        return text;
    } catch (const FormatFault& fault) {
        // Without its line, which is relative to the beginning of this record.
        throw FormatFault(std::string("the format can't hold a record: ") + fault.what());
    }
}

}  // namespace database_formats
