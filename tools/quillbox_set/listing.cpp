#include "listing.h"

#include "exit_code.h"
#include "item_inside.h"
#include "json_list.h"
#include "screen_text/screen_text.h"
#include "set/stream_decoding.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <cstdio>
#include <iostream>
#include <optional>

namespace quillbox_set {

using screen_text::linesOnScreen;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

// What unpacking an item showed. Empty unless the options ask for it.
// NOLINTNEXTLINE(bugprone-exception-escape): no move of these members throws
struct Unpacked {
    std::optional<std::uint64_t> bytes;  // nothing if the stream is damaged
    ItemInside inside;
    bool isWhole = true;
};

BOOL addUp(const BYTE*, DWORD bytes, void* total)
{
    *static_cast<std::uint64_t*>(total) += bytes;
    return TRUE;
}

std::optional<std::uint64_t> unpackedBytes(const OpenFile& data, const Item& item)
{
    std::uint64_t total = 0;
    if (DecodeStream(data.handle(), item.entry.startOffset, item.entry.endOffset, addUp, &total) != StreamFault::None)
        return std::nullopt;
    return total;
}

Unpacked unpack(const OpenFile& data, const Item& item, const ListingOptions& options)
{
    Unpacked unpacked;
    if (options.sizes) {
        unpacked.bytes = unpackedBytes(data, item);
        unpacked.isWhole = unpacked.bytes.has_value();
    }
    if (options.inside) {
        unpacked.inside = lookInside(data, item);
        unpacked.isWhole &= unpacked.inside.fault.empty();
    }
    return unpacked;
}

// One row of the table. `bytes`: the text in the column of unpacked sizes, which only --sizes prints.
void printRow(const std::string& kind, const std::string& packedBytes, const std::string& bytes,
              const std::string& name, const ListingOptions& options)
{
    std::printf("%-8s %12s ", kind.c_str(), packedBytes.c_str());
    if (options.sizes)
        std::printf("%12s ", bytes.c_str());
    std::printf("%s\n", name.c_str());
}

void printItem(const Item& item, const Unpacked& unpacked, const ListingOptions& options)
{
    printRow(item.kindText(), std::to_string(item.packedBytes()),
             unpacked.bytes ? std::to_string(*unpacked.bytes) : "damaged", onScreen(item.shownName()), options);
    if (!unpacked.inside.text.empty())
        std::printf("    %s\n", unpacked.inside.text.c_str());
}

Json jsonOf(const Item& item, const Unpacked& unpacked, const ListingOptions& options)
{
    Json json = {{"kind", item.kindText()},
                 {"name", platform::text::toUtf8(item.shownName())},
                 {"packedBytes", item.packedBytes()}};
    if (options.sizes)
        json["bytes"] = unpacked.bytes ? Json(*unpacked.bytes) : Json(nullptr);
    if (options.inside && (item.isDatabase() || item.isRegistry()))
        json["inside"] = unpacked.inside.json;
    if (!unpacked.inside.fault.empty())
        json["fault"] = unpacked.inside.fault;
    return json;
}

// Both return whether everything that was unpacked is whole.
bool printAsText(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    std::printf("%s\n", linesOnScreen(set.comment(), "").c_str());
    printRow("Kind", "Packed bytes", "Bytes", "Name", options);
    bool whole = true;
    Item item;
    while (set.next(item)) {
        const Unpacked unpacked = unpack(data, item, options);
        printItem(item, unpacked, options);
        whole &= unpacked.isWhole;
    }
    return whole;
}

bool printAsJson(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    JsonList list({{"comment", platform::text::toUtf8(set.comment())}}, "items");
    bool whole = true;
    std::uint64_t items = 0;
    Item item;
    for (; set.next(item); items++) {
        const Unpacked unpacked = unpack(data, item, options);
        list.add(jsonOf(item, unpacked, options));
        whole &= unpacked.isWhole;
    }
    list.end({{"count", items}});
    return whole;
}

}  // namespace

int listSet(ListedSet& set, const MountedSet& files, const ListingOptions& options)
{
    const OpenFile data(files.dataPath, GENERIC_READ, OPEN_EXISTING);
    if (!data.isOpen())
        std::cerr << "quillbox-set: the data file is missing\n";
    const bool whole = (options.json ? printAsJson : printAsText)(set, data, options);
    if (set.readFailed())
        std::cerr << "quillbox-set: the list file couldn't be read to its end\n";
    return data.isOpen() && !set.readFailed() && whole ? exitGood : exitFaults;
}

}  // namespace quillbox_set
