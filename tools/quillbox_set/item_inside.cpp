#include "item_inside.h"

#include "archive/item_content.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <cstdio>

namespace quillbox_set {

using namespace archive;

using screen_text::counted;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

std::string sortText(const SORTORDERSPEC& order)
{
    char id[16];
    (void)std::snprintf(id, sizeof id, "%08x", static_cast<unsigned>(order.propid));
    std::string text = id;
    if (order.dwFlags & CEDB_SORT_DESCENDING)
        text += " descending";
    if (order.dwFlags & CEDB_SORT_CASEINSENSITIVE)
        text += " without case";
    if (order.dwFlags & CEDB_SORT_UNKNOWNFIRST)
        text += " unknown first";
    return text;
}

ItemInside insideOfDatabase(const ImageReport& image)
{
    ItemInside inside{"", nullptr, image.fault};
    if (!image.hasHead())
        return inside;
    inside.text = "\"" + onScreen(image.name) + "\", " + counted(image.records, "record") + ", type " +
                  std::to_string(image.type);
    Json sort = Json::array();
    for (const SORTORDERSPEC& order : image.sortOrders) {
        inside.text += (sort.empty() ? ", sorted by " : "; ") + sortText(order);
        sort.push_back({{"property", order.propid}, {"flags", order.dwFlags}});
    }
    inside.json = {
        {"name", platform::text::toUtf8(image.name)}, {"type", image.type}, {"records", image.records}, {"sort", sort}};
    return inside;
}

ItemInside insideOfRegistry(const ContentReport& registry)
{
    if (!registry.fault.empty())
        return {"", nullptr, registry.fault};
    return {counted(registry.keys, "key") + ", " + counted(registry.values, "value"),
            {{"keys", registry.keys}, {"values", registry.values}},
            ""};
}

}  // namespace

ItemInside lookInside(const OpenFile& data, const Item& item)
{
    ItemInside inside{"", nullptr, ""};
    if (!item.isDatabase() && !item.isRegistry())
        return inside;
    ContentSink ignored;
    const ContentReport content = readContent(data, item, ignored);
    inside = item.isDatabase() ? insideOfDatabase(content.image) : insideOfRegistry(content);
    if (!inside.fault.empty())
        inside.text += (inside.text.empty() ? "damaged: " : "; damaged: ") + inside.fault;
    return inside;
}

}  // namespace quillbox_set
