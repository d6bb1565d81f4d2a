#include "listing.h"

#include "archive/fault_text.h"
#include "archive/item_content.h"
#include "exit_code.h"
#include "item_inside.h"
#include "json_list.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iomanip>
#include <iostream>
#include <optional>

namespace quillbox_set {

using namespace archive;
using screen_text::linesOnScreen;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

// What is printed about an item.
// NOLINTNEXTLINE(bugprone-exception-escape): no move of these members throws
struct ItemRow {
    std::string kind;
    std::u16string name;
    DWORD packedBytes = 0;
    std::optional<std::uint64_t> bytes;  // nothing if the stream is damaged, or if the options don't ask for sizes
    ItemInside inside;
    bool isWhole = true;
};

std::optional<std::uint64_t> unpackedBytes(const OpenFile& data, const Item& item)
{
    Item asFile = item;  // so the content isn't interpreted
    asFile.entry.kind = ItemKindFile;
    ContentSink ignored;
    const ContentReport content = readContent(data, asFile, ignored);
    return content.fault.empty() ? std::optional(content.bytes) : std::nullopt;
}

ItemRow rowOf(const OpenFile& data, const Item& item, const ListingOptions& options)
{
    ItemRow row{item.kindText(), std::u16string(item.shownName()), item.packedBytes(), {}, {}, true};
    if (options.sizes) {
        row.bytes = unpackedBytes(data, item);
        row.isWhole = row.bytes.has_value();
    }
    if (options.inside && (item.isDatabase() || item.isRegistry())) {
        row.inside = lookInside(data, item);
        row.isWhole &= row.inside.fault.empty();
    }
    return row;
}

// Returns the ratio in percent, or "-" if the item is empty or its size isn't known.
std::string ratioOf(const ItemRow& row)
{
    if (row.bytes.value_or(0) == 0)
        return "-";
    const double percent = 100.0 * row.packedBytes / static_cast<double>(*row.bytes);
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.0f %%", percent);
    return text;
}

// Prints one row of the table. `bytes` and `ratio` are printed only if the options ask for them.
void printCells(const std::string& kind, const std::string& packedBytes, const std::string& bytes,
                const std::string& ratio, const std::string& name, const ListingOptions& options)
{
    std::cout << std::left << std::setw(8) << kind << ' ' << std::right << std::setw(12) << packedBytes << ' ';
    if (options.sizes)
        std::cout << std::setw(12) << bytes << ' ';
    if (options.ratios)
        std::cout << std::setw(7) << ratio << ' ';
    std::cout << name << '\n';
}

void printRow(const ItemRow& row, const ListingOptions& options)
{
    printCells(row.kind, std::to_string(row.packedBytes), row.bytes ? std::to_string(*row.bytes) : "damaged",
               ratioOf(row), onScreen(row.name), options);
    if (!row.inside.text.empty())
        std::cout << "    " << row.inside.text << '\n';
}

Json jsonOf(const ItemRow& row, const ListingOptions& options)
{
    Json json = {{"kind", row.kind}, {"name", platform::text::toUtf8(row.name)}, {"packedBytes", row.packedBytes}};
    if (options.sizes)
        json["bytes"] = row.bytes ? Json(*row.bytes) : Json(nullptr);
    if (options.ratios)
        json["ratio"] = row.bytes.value_or(0) != 0 ? Json(row.packedBytes / static_cast<double>(*row.bytes)) : Json();
    if (!row.inside.text.empty())
        json["inside"] = row.inside.json;
    if (!row.inside.fault.empty())
        json["fault"] = row.inside.fault;
    return json;
}

// Sorts the rows. Rows that are equal in this order stay in the order of the set.
void sortRows(std::vector<ItemRow>& rows, ListOrder order)
{
    if (order == ListOrder::ByName)
        std::ranges::stable_sort(rows, {}, &ItemRow::name);
    else if (order == ListOrder::BySize)
        std::ranges::stable_sort(rows, std::greater(), [](const ItemRow& row) { return row.bytes.value_or(0); });
    else
        std::ranges::stable_sort(rows, std::greater(), &ItemRow::packedBytes);
}

// Calls print(row) for each item, in the order that the options ask for. Returns false if an item that was unpacked is
// damaged.
template <class Print>
bool forEachRow(ListedSet& set, const OpenFile& data, const ListingOptions& options, const Print& print)
{
    bool whole = true;
    std::vector<ItemRow> kept;
    Item item;
    while (set.next(item)) {
        ItemRow row = rowOf(data, item, options);
        whole &= row.isWhole;
        if (options.order == ListOrder::OfSet)
            print(row);
        else
            kept.push_back(std::move(row));
    }
    sortRows(kept, options.order);
    std::ranges::for_each(kept, print);
    return whole;
}

bool printAsText(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    std::cout << linesOnScreen(set.comment(), "") << '\n';
    printCells("Kind", "Packed bytes", "Bytes", "Ratio", "Name", options);
    return forEachRow(set, data, options, [&](const ItemRow& row) { printRow(row, options); });
}

bool printAsJson(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    JsonList list({{"comment", platform::text::toUtf8(set.comment())}}, "items");
    std::uint64_t items = 0;
    const bool whole = forEachRow(set, data, options, [&](const ItemRow& row) {
        list.add(jsonOf(row, options));
        items++;
    });
    list.end({{"itemCount", items}});
    return whole;
}

}  // namespace

int listSet(ListedSet& set, const MountedSet& files, const ListingOptions& options)
{
    const OpenFile data(files.dataPath, GENERIC_READ, OPEN_EXISTING);
    if (!data.isOpen())
        std::cerr << "quillbox-set: " << notOpened("the data file", data.error()) << "\n";
    const bool whole = (options.json ? printAsJson : printAsText)(set, data, options);
    const std::string fault = set.missingItems();
    if (!fault.empty())
        std::cerr << "quillbox-set: " << fault << "\n";
    return data.isOpen() && fault.empty() && whole ? exitGood : exitFaults;
}

}  // namespace quillbox_set
