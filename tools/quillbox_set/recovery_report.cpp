#include "recovery_report.h"

#include "archive/fault_text.h"
#include "archive/item_target.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "set/item_kinds.h"

#include "text/host_name.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>

namespace quillbox_set {

using namespace archive;
using platform::text::toUtf8;
using screen_text::counted;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view Head =
    "What was found in %, by offset in the file. One line for each item:\n"
    "\n"
    "complete  The item is as it was stored. No sector of its stream can have been replaced.\n"
    "unproven  The stream is whole, but a set has no checksums: sectors in the middle of a long run of\n"
    "          uncompressed bytes can have been replaced. Look at the file before you rely on it.\n"
    "partial   Something is missing, is damaged or couldn't be read. Where that is in the middle of the file, the\n"
    "          file has zeros.\n"
    "lost      A list names the item, but no stream of it was found.\n"
    "\n";

const char* word(Recovery state)
{
    constexpr std::array Words = {"complete", "unproven", "partial"};
    return Words.at(static_cast<std::size_t>(state));
}

std::string path(const std::u16string& target)
{
    std::string shown = onScreen(target.substr(1));
    std::ranges::replace(shown, '\\', '/');
    return shown;
}

// Returns a text such as "offset 17, 40 bytes packed".
std::string place(std::uint64_t start, std::uint64_t end)
{
    return "offset " + std::to_string(start) + ", " + counted(end - start, "byte") + " packed";
}

std::string padded(std::string word)
{
    constexpr std::size_t Width = 10;
    word.resize(std::max(word.size() + 1, Width), ' ');
    return word;
}

// Returns what is missing or damaged in a partial item.
std::string damageOf(const RecoveredItem& item)
{
    const FoundStream& stream = item.stream;
    std::string text;
    if (!stream.hasMagic)
        text += "; its beginning is missing";
    if (!stream.isReadable)
        text += "; the host couldn't read all of it";
    if (stream.damagedBlocks != 0)
        text +=
            "; " + counted(stream.damagedBlocks, "damaged block") + " after byte " + std::to_string(stream.soundBytes);
    if (!stream.isClosed)
        text += "; its end is missing";
    if (!item.damage.empty())
        text += "; " + item.damage;
    return text;
}

std::string textOf(const RecoveredItem& item)
{
    std::string text = padded(word(item.state)) + padded(KindOf(item.kind).word) +
                       place(item.stream.start, item.stream.end) + ": " +
                       (item.target.empty() ? item.fault : path(item.target) + ", " + counted(item.bytes, "byte"));
    if (!item.name.empty() && item.name != item.target)
        text += ", named " + onScreen(item.name);
    if (item.state == Recovery::Partial)
        text += damageOf(item);
    if (!item.notInSet.empty())
        text += "; not in the new set: " + item.notInSet;
    return text;
}

Json orNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

Json jsonOf(const RecoveredItem& item, const std::string& folder)
{
    return {{"state", word(item.state)},
            {"kind", KindOf(item.kind).word},
            {"name", orNull(toUtf8(item.name))},
            {"offset", item.stream.start},
            {"packedBytes", item.stream.end - item.stream.start},
            {"unpackedBytes", item.stream.rawBytes},
            {"soundBytes", item.stream.soundBytes},
            {"damagedBlockCount", item.stream.damagedBlocks},
            {"hasBeginning", item.stream.hasMagic},
            {"hasEnd", item.stream.isClosed},
            {"unreadable", !item.stream.isReadable},
            {"damage", orNull(item.damage)},
            {"target", item.target.empty() ? Json(nullptr) : jsonText(hostPathOf(folder, item.target))},
            {"bytes", item.bytes},
            {"notInSet", orNull(item.notInSet)},
            {"fault", orNull(item.fault)}};
}

Json jsonOf(const std::vector<std::u16string>& names)
{
    Json list = Json::array();
    for (const std::u16string& name : names)
        list.push_back(toUtf8(name));
    return list;
}

std::string summary(const RecoveryCounts& counts, const ScanTotals& totals)
{
    std::ostringstream text;
    text << counts.complete << " complete, " << counts.unproven << " unproven, " << counts.partial << " partial, "
         << counts.lost << " lost. ";
    if (counts.failed != 0)
        text << counted(counts.failed, "item") << " couldn't be written. ";
    text << counted(totals.unclaimed, "byte") << " of " << counted(totals.fileBytes, "byte") << " belong to no item.";
    if (totals.lostStreams != 0)
        text << " Of " << counted(totals.lostStreams, "stream") << " nothing can be unpacked.";
    if (totals.unreadable != 0)
        text << " The host couldn't read " << counted(totals.unreadable, "byte") << ".";
    if (totals.gaveUp)
        text << " Parts weren't searched, because too much in them only looks like a stream.";
    return text.str();
}

}  // namespace

RecoveryReport::RecoveryReport(const std::string& file, const std::string& folder, bool json)
    : folder_(folder), file_(std::u16string(ReportPath)), buffer_(file_), out_(&buffer_)
{
    std::string head(Head);
    head.replace(head.find('%'), 1, onScreen(std::string_view(file)));
    out_ << head;
    if (json)
        list_.emplace(Json{{"file", file}}, "items");
}

void RecoveryReport::line(const std::string& text)
{
    out_ << text << '\n';
    if (!list_)
        std::cout << text << '\n';
}

void RecoveryReport::add(const RecoveredItem& item)
{
    (item.state == Recovery::Complete   ? counts_.complete
     : item.state == Recovery::Unproven ? counts_.unproven
                                        : counts_.partial)++;
    counts_.failed += item.target.empty() ? 1 : 0;
    line(textOf(item));
    if (list_)
        list_->add(jsonOf(item, folder_));
}

void RecoveryReport::addLost(const OldEntry& entry)
{
    counts_.lost++;
    line(padded("lost") + padded(KindOf(entry.kind).word) + place(entry.start, entry.end) + ": " +
         onScreen(entry.name));
    if (list_)
        list_->add({{"state", "lost"},
                    {"kind", KindOf(entry.kind).word},
                    {"name", toUtf8(entry.name)},
                    {"offset", entry.start},
                    {"packedBytes", entry.end - entry.start}});
}

std::string RecoveryReport::finish(const ScanTotals& totals, const NewSetResult& set)
{
    out_ << '\n';
    line(summary(counts_, totals));
    if (!set.summary.empty())
        line(set.summary);
    if (list_)
        list_->end({{"completeCount", counts_.complete},
                    {"unprovenCount", counts_.unproven},
                    {"partialCount", counts_.partial},
                    {"lostCount", counts_.lost},
                    {"failedCount", counts_.failed},
                    {"fileBytes", totals.fileBytes},
                    {"unclaimedBytes", totals.unclaimed},
                    {"unreadableBytes", totals.unreadable},
                    {"lostStreamCount", totals.lostStreams},
                    {"searchedWhole", !totals.gaveUp},
                    {"newSet", set.path.empty() ? Json(nullptr) : jsonText(set.path)},
                    {"summary", orNull(set.summary)},
                    {"unreadableNames", jsonOf(set.unreadable)}});
    out_.flush();
    return file_.moveToTarget(false) == ERROR_SUCCESS ? "" : "recovered.txt: " + errorText(file_.error());
}

}  // namespace quillbox_set
