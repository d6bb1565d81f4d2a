#include "component_fields.h"

#include "database_formats/value_text.h"

#include "ce/personal_databases.h"

#include "text/host_name.h"

#include <algorithm>

namespace database_formats {

namespace {

// True for a line without content, such as "CATEGORIES:" and "N:;;;;".
bool isEmpty(const ContentLine& line)
{
    return line.value.find_first_not_of("; ") == std::string::npos;
}

std::string withSemicolons(std::string_view categories)
{
    std::string text(categories);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\')
            ++at;
        else if (text[at] == ',')
            text[at] = ';';
    }
    return unescaped(text);
}

}  // namespace

const ContentLine* ComponentFields::take(std::string_view name, std::string_view type,
                                         std::span<const std::string_view> last)
{
    const auto rank = [&](const ContentLine& line) {
        const bool isLast = std::ranges::any_of(last, [&](std::string_view late) { return line.hasType(late); });
        return (isLast ? 0 : 2) + (!type.empty() && line.hasType(type) ? 1 : 0);
    };
    const ContentLine* best = nullptr;
    int bestRank = -1;
    std::size_t candidates = 0;
    for (const ContentLine& line : component_.lines) {
        if (line.name != name || isEmpty(line))
            continue;
        if (line.leftOut) {
            leftOut_.add(name);
            continue;
        }
        ++candidates;
        if (const int lineRank = rank(line); lineRank > bestRank) {
            best = &line;
            bestRank = lineRank;
        }
    }
    for (; candidates > 1; --candidates)
        leftOut_.add(name);
    taken_.emplace_back(name);
    if (best != nullptr)
        use(*best);
    return best;
}

void ComponentFields::takeText(Record& record, std::string_view name, CEPROPID id)
{
    if (const ContentLine* line = take(name))
        record.addText(id, 0, validText(unescaped(line->value)));
}

void ComponentFields::takeCategories(Record& record)
{
    std::string categories;
    for (const ContentLine& line : component_.lines) {
        if (line.name != "CATEGORIES")
            continue;
        if (line.leftOut) {
            leftOut_.add(line.name);
        } else if (!isEmpty(line)) {
            use(line);
            categories += (categories.empty() ? "" : ";") + withSemicolons(line.value);
        }
    }
    taken_.emplace_back("CATEGORIES");
    if (!categories.empty())
        record.addText(personal::Categories, 0, validText(categories));
}

void ComponentFields::takeNotes(Record& record, std::string_view name)
{
    if (const ContentLine* line = take(name))
        record.addBlob(personal::Notes, 0, unescaped(line->value));
}

void ComponentFields::leaveOut(std::string_view name, std::string_view shownName)
{
    for (const ContentLine& line : component_.lines)
        if (line.name == name && !isEmpty(line))
            leftOut_.add(shownName);
    taken_.emplace_back(name);
}

void ComponentFields::leaveRest(std::span<const std::string_view> ignored)
{
    for (const ContentLine& line : component_.lines)
        if (!isEmpty(line) && std::ranges::find(taken_, line.name) == taken_.end() &&
            std::ranges::find(ignored, line.name) == ignored.end())
            leftOut_.add(line.name);
}

void ComponentFields::use(const ContentLine& line)
{
    requireText(line);
    if (line.guessed)
        leftOut_.addGuess(line.name);
}

std::string textIn(std::span<const CEPROPVAL> properties, CEPROPID id)
{
    const CEPROPVAL* property = propertyIn(properties, id);
    return property != nullptr ? platform::text::toUtf8(property->val.lpwstr) : std::string();
}

void addTextLine(Component& component, std::string_view name, const std::string& text)
{
    if (!text.empty())
        component.add(std::string(name), escaped(text));
}

void addCategories(Component& component, const std::string& categories)
{
    std::string value;
    for (std::size_t begin = 0; begin <= categories.size();) {
        const std::size_t end = std::min(categories.find(';', begin), categories.size());
        value += (begin == 0 ? "" : ",") + escaped(std::string_view(categories).substr(begin, end - begin));
        begin = end + 1;
    }
    if (!value.empty())
        component.add("CATEGORIES", value);
}

void addNotes(Component& component, std::string_view name, std::span<const CEPROPVAL> properties)
{
    const CEPROPVAL* notes = propertyIn(properties, personal::Notes);
    if (notes == nullptr || notes->val.blob.dwCount == 0)
        return;
    const std::string bytes(reinterpret_cast<const char*>(notes->val.blob.lpb), notes->val.blob.dwCount);
    if (isValidUtf8(bytes) && bytes.find('\0') == std::string::npos)
        addTextLine(component, name, bytes);
}

}  // namespace database_formats
