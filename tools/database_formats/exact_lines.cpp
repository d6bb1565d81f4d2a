// exact_lines.cpp - see exact_lines.h.

#include "exact_lines.h"

#include "database_formats/format_fault.h"
#include "database_formats/value_text.h"
#include "hex_digits.h"

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

// What our lines of a component say.
struct OurLines {
    Record properties;
    std::unordered_set<CEPROPID> without;
    std::vector<CEPROPID> order;
};

OurLines ourLinesOf(const Component& component)
{
    OurLines ours;
    for (const ContentLine& line : component.lines) {
        if (line.name.starts_with(ExactPrefix))
            demandText(line);
        atLine(line, [&] {
            if (line.name == PropertyLine)
                addProperty(ours.properties, line);
            else if (line.name == OrderLine)
                ours.order = idsIn(line.value);
            else if (line.name == WithoutLine)
                for (const CEPROPID id : idsIn(line.value))
                    ours.without.insert(id);
        });
    }
    return ours;
}

// False for the 0 that reading gives where a line isn't there; a number above it somebody has put into the file since.
bool saysSomething(const CEPROPVAL& property)
{
    return LOWORD(property.propid) != CEVT_LPWSTR && valueText(property, Controls::Kept) != "0";
}

// The properties of plain lines and ours together: ours hold where both have one.
std::vector<CEPROPVAL> together(const Record& plain, const OurLines& ours)
{
    std::vector<CEPROPVAL> all;
    std::unordered_map<CEPROPID, std::size_t> places;
    const auto put = [&](const CEPROPVAL& property) {
        const auto [place, isNew] = places.emplace(property.propid, all.size());
        if (isNew)
            all.push_back(property);
        else
            all[place->second] = property;
    };
    for (const CEPROPVAL& property : plain.properties())
        if (!ours.without.contains(property.propid) || saysSomething(property))
            put(property);
    for (const CEPROPVAL& property : ours.properties.properties())
        put(property);
    std::unordered_map<CEPROPID, std::size_t> ranks;
    for (const CEPROPID id : ours.order)
        ranks.emplace(id, ranks.size());
    // What isn't in the order was added to the file by somebody else, and goes behind.
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

// Adds the property lines, and the line of those that reading gives for nothing.
void addDifferences(Component& component, const Record& plain, std::span<const CEPROPVAL> wanted)
{
    std::unordered_map<CEPROPID, const CEPROPVAL*> readBack;
    for (const CEPROPVAL& property : plain.properties())
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

// As a reader of the file gets it.
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

Record exactRecord(const Component& component, const PlainReading& read, LeftOut& leftOut)
{
    const Record plain = read(component, leftOut);
    const OurLines ours = ourLinesOf(component);
    Record record;
    for (const CEPROPVAL& property : together(plain, ours))
        record.addCopy(property);
    return record;
}

std::string exactText(Component component, const PlainReading& read, std::span<const CEPROPVAL> properties)
{
    const std::vector<CEPROPID> order = idsOf(properties);
    if (std::unordered_set(order.begin(), order.end()).size() < order.size())
        throw FormatFault("a record has a property twice");
    try {
        LeftOut ignored;
        const Record plain = read(readBackFrom(textOf(component)), ignored);
        addDifferences(component, plain, properties);
        if (idsOf(together(plain, ourLinesOf(component))) != order)
            component.add(std::string(OrderLine), listOf(order));
        std::string text = textOf(component);
        (void)readBackFrom(text);
        return text;
    } catch (const FormatFault& fault) {
        // Its line counts from the record's beginning.
        throw FormatFault(std::string("a record can't be held: ") + fault.what());
    }
}

}  // namespace database_formats
