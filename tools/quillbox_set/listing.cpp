// listing.cpp - see listing.h.

#include "listing.h"

#include "exit_code.h"
#include "item_inside.h"
#include "json_list.h"
#include "listed_set.h"
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

BOOL addUp(const BYTE*, DWORD bytes, void* total)
{
    *static_cast<std::uint64_t*>(total) += bytes;
    return TRUE;
}

// Nothing if the stream is damaged.
std::optional<std::uint64_t> rawBytes(const OpenFile& data, const Item& item)
{
    std::uint64_t total = 0;
    if (DecodeStream(data.handle(), item.entry.startOffset, item.entry.endOffset, addUp, &total) != StreamFault::None)
        return std::nullopt;
    return total;
}

// `raw`: the column of unpacked sizes, if there is one.
void printLine(const std::string& kind, const std::string& packed, const std::optional<std::string>& raw,
               const std::string& name)
{
    std::printf("%-8s %12s ", kind.c_str(), packed.c_str());
    if (raw)
        std::printf("%12s ", raw->c_str());
    std::printf("%s\n", name.c_str());
}

// Both return whether everything that was unpacked is whole.
bool printAsText(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    std::printf("%s\n", linesOnScreen(set.comment(), "").c_str());
    printLine("Kind", "Packed bytes", options.sizes ? std::optional("Bytes") : std::nullopt, "Name");
    bool whole = true;
    Item item;
    while (set.next(item)) {
        std::optional<std::string> raw;
        if (options.sizes) {
            const auto bytes = rawBytes(data, item);
            raw = bytes ? std::to_string(*bytes) : "damaged";
            whole &= bytes.has_value();
        }
        printLine(item.kindText(), std::to_string(item.packedBytes()), raw, onScreen(item.shownName()));
        if (!options.inside)
            continue;
        const ItemInside inside = lookInside(data, item);
        whole &= inside.fault.empty();
        if (!inside.text.empty())
            std::printf("    %s\n", inside.text.c_str());
    }
    return whole;
}

// Returns whether it is whole.
bool addInside(nlohmann::ordered_json& element, const OpenFile& data, const Item& item)
{
    if (!item.isDatabase() && !item.isRegistry())
        return true;
    const ItemInside inside = lookInside(data, item);
    element["inside"] = inside.json;
    if (!inside.fault.empty())
        element["fault"] = inside.fault;
    return inside.fault.empty();
}

bool printAsJson(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    JsonList list({{"comment", platform::text::toUtf8(set.comment())}}, "items");
    Item item;
    bool whole = true;
    std::uint64_t items = 0;
    while (set.next(item)) {
        nlohmann::ordered_json element = {{"kind", item.kindText()},
                                          {"name", platform::text::toUtf8(item.shownName())},
                                          {"packedBytes", item.packedBytes()}};
        if (options.sizes) {
            const auto bytes = rawBytes(data, item);
            whole &= bytes.has_value();
            element["bytes"] = bytes ? nlohmann::ordered_json(*bytes) : nlohmann::ordered_json(nullptr);
        }
        if (options.inside)
            whole &= addInside(element, data, item);
        list.add(element);
        items++;
    }
    list.end({{"count", items}});
    return whole;
}

}  // namespace

int listSet(const MountedSet& files, const ListingOptions& options)
{
    ListedSet set(files);
    if (!set.isOpen()) {
        std::cerr << "quillbox-set: the list file can't be opened\n";
        return exitNoSet;
    }
    const OpenFile data(files.dataPath, GENERIC_READ, OPEN_EXISTING);
    if (!data.isOpen())
        std::cerr << "quillbox-set: the data file is missing\n";
    const bool whole = (options.json ? printAsJson : printAsText)(set, data, options);
    if (set.readFailed())
        std::cerr << "quillbox-set: the list file couldn't be read to its end\n";
    return data.isOpen() && !set.readFailed() && whole ? exitGood : exitFaults;
}

}  // namespace quillbox_set
