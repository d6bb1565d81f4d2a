#include "change_lines.h"

#include "result_line.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <iostream>

namespace quillbox_set {

using namespace archive;
using Json = nlohmann::ordered_json;

namespace {

std::string quoted(const std::optional<std::string>& value)
{
    return value ? "\"" + screen_text::onScreen(std::string_view(*value)) + "\"" : "(none)";
}

Json orNull(const std::optional<std::string>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json jsonOf(Change change, const Item& item)
{
    return {{"change", nameOf(change)}, {"kind", item.kindText()}, {"name", platform::text::toUtf8(item.shownName())}};
}

}  // namespace

std::string_view nameOf(Change change)
{
    return change == Change::Added ? "added" : change == Change::Removed ? "removed" : "changed";
}

std::string linesOf(const std::vector<FieldChange>& fields, const std::string& indent)
{
    std::string lines;
    for (const FieldChange& field : fields) {
        lines += "\n" + indent + field.name + ": ";
        if (field.before)
            lines += quoted(field.before) + (field.after ? " -> " : "");
        if (field.after)
            lines += quoted(field.after);
        else if (field.before)
            lines += " -> (none)";
    }
    return lines;
}

Json jsonOf(const std::vector<FieldChange>& fields)
{
    Json list = Json::array();
    for (const FieldChange& field : fields)
        list.push_back({{"field", field.name}, {"before", orNull(field.before)}, {"after", orNull(field.after)}});
    return list;
}

void ChangeLines::printItem(Change change, const Item& item, const Json& more, const std::string& text)
{
    any_ = true;
    Json line = jsonOf(change, item);
    line.update(more);
    printResult(json_, line, std::string(nameOf(change)) + "  " + item.text() + text);
}

void ChangeLines::print(Change change, const Item& item)
{
    printItem(change, item, Json::object(), "");
}

void ChangeLines::printFile(const Item& item, std::uint64_t bytesBefore, std::uint64_t bytesAfter)
{
    printItem(Change::Changed, item, {{"bytesBefore", bytesBefore}, {"bytesAfter", bytesAfter}},
              ", " + screen_text::counted(bytesBefore, "byte") + " -> " + std::to_string(bytesAfter));
}

void ChangeLines::printPatch(const std::string& patch)
{
    if (json_)
        printResult(true, {{"patch", jsonText(patch)}}, "");
    else
        std::cout << patch;
}

void ChangeLines::printDatabase(const Item& item, const RecordCollector& before, const RecordCollector& after)
{
    std::string text =
        ", " + screen_text::counted(before.digests.size(), "record") + " -> " + std::to_string(after.digests.size());
    if (before.type() != after.type())
        text += ", type " + std::to_string(before.type()) + " -> " + std::to_string(after.type());
    if (before.sortOrders() != after.sortOrders())
        text += ", other sort orders";
    printItem(Change::Changed, item, {{"recordsBefore", before.digests.size()}, {"recordsAfter", after.digests.size()}},
              text);
}

void ChangeLines::printRecord(const Item& item, const RecordChange& change)
{
    Json line = jsonOf(change.change, item);
    line.update({{"record", change.title}, {"fields", jsonOf(change.fields)}});
    printResult(json_, line,
                "    " + std::string(nameOf(change.change)) + "  " +
                    screen_text::onScreen(std::string_view(change.title)) + linesOf(change.fields, "        "));
}

void ChangeLines::printValue(const RegistryPlace& place, const std::optional<std::string>& before,
                             const std::optional<std::string>& after)
{
    const Change change = !before ? Change::Added : !after ? Change::Removed : Change::Changed;
    Json line = {{"change", nameOf(change)}, {"kind", "registry"},
                 {"name", "registry"},       {"key", platform::text::toUtf8(place.key)},
                 {"value", nullptr},         {"before", nullptr},
                 {"after", nullptr}};
    std::string text = "    " + std::string(nameOf(change)) + "  " + onScreen(place);
    if (place.isValue) {
        line["value"] = platform::text::toUtf8(place.name);
        line["before"] = orNull(before);
        line["after"] = orNull(after);
        text += ": " + screen_text::onScreen(std::string_view(before.value_or(""))) + (before && after ? " -> " : "") +
                screen_text::onScreen(std::string_view(after.value_or("")));
    }
    printResult(json_, line, text);
}

}  // namespace quillbox_set
