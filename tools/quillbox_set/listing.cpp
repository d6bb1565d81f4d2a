// listing.cpp - see listing.h.

#include "listing.h"

#include "exit_code.h"
#include "host_name.h"
#include "item_inside.h"
#include "json_list.h"
#include "listed_set.h"
#include "screen_text.h"
#include "stream_decoding.h"

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

// The name of the registry's entry means nothing.
std::u16string_view shownName(const Item& item)
{
    return item.isFile() || item.isDatabase() ? item.name() : std::u16string_view{};
}

void printLine(const Item& item, const std::optional<std::string>& raw)
{
    std::printf("%-8s %11u ", item.kindText().c_str(), item.packedBytes());
    if (raw)
        std::printf("%11s ", raw->c_str());
    std::printf("%s\n", onScreen(shownName(item)).c_str());
}

void printAsText(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    std::printf("%s\n", linesOnScreen(set.comment(), "").c_str());
    Item item;
    while (set.next(item)) {
        std::optional<std::string> raw;
        if (options.sizes) {
            const auto bytes = rawBytes(data, item);
            raw = bytes ? std::to_string(*bytes) : "damaged";
        }
        printLine(item, raw);
        if (const std::string inside = options.inside ? lookInside(data, item).text : ""; !inside.empty())
            std::printf("    %s\n", inside.c_str());
    }
}

void addInside(nlohmann::ordered_json& element, const OpenFile& data, const Item& item)
{
    if (!item.isDatabase() && !item.isRegistry())
        return;
    const ItemInside inside = lookInside(data, item);
    element["inside"] = inside.json;
    if (!inside.fault.empty())
        element["fault"] = inside.fault;
}

void printAsJson(ListedSet& set, const OpenFile& data, const ListingOptions& options)
{
    JsonList list({{"comment", platform::text::toUtf8(set.comment())}}, "items");
    Item item;
    std::uint64_t items = 0;
    while (set.next(item)) {
        nlohmann::ordered_json element = {{"kind", item.kindText()},
                                          {"name", platform::text::toUtf8(shownName(item))},
                                          {"packedBytes", item.packedBytes()}};
        if (options.sizes) {
            const auto bytes = rawBytes(data, item);
            element["bytes"] = bytes ? nlohmann::ordered_json(*bytes) : nlohmann::ordered_json(nullptr);
        }
        if (options.inside)
            addInside(element, data, item);
        list.add(element);
        items++;
    }
    list.end({{"count", items}});
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
    (options.json ? printAsJson : printAsText)(set, data, options);
    if (set.readFailed())
        std::cerr << "quillbox-set: the list file couldn't be read to its end\n";
    return data.isOpen() && !set.readFailed() ? exitGood : exitFaults;
}

}  // namespace quillbox_set
