#include "comparison.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/name_set.h"
#include "archive/opened_set.h"
#include "archive/record_changes.h"
#include "archive/registry_values.h"
#include "archive/set_search.h"
#include "change_lines.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "text_patch.h"

#include "ce/file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <unordered_map>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

constexpr std::size_t PieceBytes = 65536;

bool readAt(const OpenFile& file, DWORD offset, std::span<std::byte> piece)
{
    DWORD bytes = 0;
    SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(file.handle(), static_cast<LONG>(offset), nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER &&
        GetLastError() != ERROR_SUCCESS)
        return false;
    return ReadFile(file.handle(), piece.data(), static_cast<DWORD>(piece.size()), &bytes, nullptr) &&
           bytes == piece.size();
}

// Computes the digest of a file's content.
class FileDigest final : public ContentSink {
public:
    bool bytes(std::span<const std::byte> piece) override
    {
        hash_.add(piece);
        return true;
    }
    Digest finish() { return hash_.finish(); }

private:
    Sha256 hash_;
};

struct Side {
    const OpenedSet& set;
    OpenFile data;
};

class Comparison {
public:
    Comparison(const OpenedSet& older, const OpenedSet& newer, bool patch, bool json)
        : older_{older, OpenFile(older.mounted().dataPath, GENERIC_READ, OPEN_EXISTING)},
          newer_{newer, OpenFile(newer.mounted().dataPath, GENERIC_READ, OPEN_EXISTING)}, patch_(patch),
          lines_(json), pieces_{std::vector<std::byte>(PieceBytes), std::vector<std::byte>(PieceBytes)}
    {
    }

    int run()
    {
        for (const Side* side : {&older_, &newer_}) {
            if (!side->data.isOpen())
                report(*side, notOpened("the data file", side->data.error()));
        }
        if (troubled_)
            return exitTrouble;
        indexNewer();
        compareOlder();
        printAdded();
        return troubled_ ? exitTrouble : lines_.any() ? exitDifferent : exitSame;
    }

private:
    struct Entry {
        DWORD start;
        DWORD end;
        bool isMatched;
    };

    static NameHash hashOf(const Item& item)
    {
        return {item.entry.kind, item.isRegistry() ? std::u16string_view() : item.name()};
    }

    void report(const Side& side, const std::string& fault)
    {
        troubled_ = true;
        std::cerr << "quillbox-set: " << onScreen(pathOf(side.set.files())) << ": " << fault << '\n';
    }

    void reportUnread(const Side& side)
    {
        if (const std::string fault = side.set.list().missingItems(); !fault.empty())
            report(side, fault);
    }

    void indexNewer()
    {
        Item item;
        while (newer_.set.list().next(item))
            index_[hashOf(item)] = {item.entry.startOffset, item.entry.endOffset, false};
        reportUnread(newer_);
    }

    void compareOlder()
    {
        Item item;
        while (older_.set.list().next(item)) {
            const auto found = index_.find(hashOf(item));
            if (found == index_.end()) {
                lines_.print(Change::Removed, item);
                continue;
            }
            found->second.isMatched = true;
            Item other = item;
            other.entry.startOffset = found->second.start;
            other.entry.endOffset = found->second.end;
            compare(item, other);
        }
        reportUnread(older_);
    }

    void printAdded()
    {
        ListedSet again(newer_.set.mounted());
        Item item;
        while (again.next(item)) {
            if (const auto found = index_.find(hashOf(item)); found != index_.end() && !found->second.isMatched)
                lines_.print(Change::Added, item);
        }
    }

    void compare(const Item& older, const Item& newer)
    {
        // Equal streams have equal content. One of them is unpacked to find damage.
        if (isPackedAlike(older, newer)) {
            ContentSink ignored;
            noteDamage(older_, older, readContent(older_.data, older, ignored));
        } else if (older.isDatabase()) {
            compareDatabases(older, newer);
        } else if (older.isRegistry()) {
            compareRegistries(older, newer);
        } else {
            compareFiles(older, newer);
        }
    }

    bool isPackedAlike(const Item& older, const Item& newer)
    {
        const DWORD bytes = older.packedBytes();
        if (bytes == 0 || bytes != newer.packedBytes())
            return false;
        for (DWORD done = 0; done < bytes;) {
            checkStop();
            const std::size_t piece = std::min<std::size_t>(PieceBytes, bytes - done);
            const auto left = std::span(pieces_[0]).first(piece);
            const auto right = std::span(pieces_[1]).first(piece);
            if (!readAt(older_.data, older.entry.startOffset + done, left) ||
                !readAt(newer_.data, newer.entry.startOffset + done, right) ||
                std::memcmp(left.data(), right.data(), piece) != 0)
                return false;
            done += static_cast<DWORD>(piece);
        }
        return true;
    }

    // Prints the fault of the item, if it has one. Returns true if the item is undamaged.
    bool noteDamage(const Side& side, const Item& item, const ContentReport& content)
    {
        if (!content.fault.empty())
            report(side, item.text() + ": " + content.fault);
        return content.fault.empty();
    }

    // Reads an item of both sets. If one of the two items is damaged, prints a message and returns false.
    template <class Sink>
    bool readBoth(const Item& older, Sink& olderSink, const Item& newer, Sink& newerSink, std::uint64_t (&bytes)[2])
    {
        const ContentReport left = readContent(older_.data, older, olderSink);
        const ContentReport right = readContent(newer_.data, newer, newerSink);
        bytes[0] = left.bytes;
        bytes[1] = right.bytes;
        const bool good = noteDamage(older_, older, left);
        return noteDamage(newer_, newer, right) && good;
    }

    void compareFiles(const Item& older, const Item& newer)
    {
        FileDigest left;
        FileDigest right;
        std::uint64_t bytes[2] = {};
        if (!readBoth(older, left, newer, right, bytes) || left.finish() == right.finish())
            return;
        lines_.printFile(older, bytes[0], bytes[1]);
        if (patch_)
            lines_.printPatch(textPatch({older_.data, older}, {newer_.data, newer}));
    }

    void compareDatabases(const Item& older, const Item& newer)
    {
        RecordCollector left{nullptr};
        RecordCollector right{nullptr};
        std::uint64_t bytes[2] = {};
        if (!readBoth(older, left, newer, right, bytes))
            return;
        const std::vector<Digest> gone = moreIn(left.digests, right.digests);
        const std::vector<Digest> come = moreIn(right.digests, left.digests);
        const bool sameHead = left.type() == right.type() && left.sortOrders() == right.sortOrders();
        if (gone.empty() && come.empty() && sameHead)
            return;
        lines_.printDatabase(older, left, right);
        // Both databases are read again, so that only the texts of the records that differ are in memory.
        RecordCollector olderTexts(
            [&](const Digest& digest, auto) { return std::ranges::binary_search(gone, digest); });
        RecordCollector newerTexts(
            [&](const Digest& digest, auto) { return std::ranges::binary_search(come, digest); });
        if (!readBoth(older, olderTexts, newer, newerTexts, bytes))
            return;
        for (const RecordChange& change : changesOf(olderTexts.texts, newerTexts.texts))
            lines_.printRecord(older, change);
    }

    void compareRegistries(const Item& older, const Item& newer)
    {
        RegistryValues left;
        RegistryValues right;
        std::uint64_t bytes[2] = {};
        if (!readBoth(older, left, newer, right, bytes) || left.places == right.places)
            return;
        lines_.print(Change::Changed, older);
        for (const auto& [place, value] : left.places) {
            if (const auto found = right.places.find(place); found == right.places.end())
                lines_.printValue(place, value, std::nullopt);
            else if (found->second != value)
                lines_.printValue(place, value, found->second);
        }
        for (const auto& [place, value] : right.places) {
            if (!left.places.contains(place))
                lines_.printValue(place, std::nullopt, value);
        }
    }

    Side older_;
    Side newer_;
    bool patch_;
    ChangeLines lines_;
    bool troubled_ = false;
    std::array<std::vector<std::byte>, 2> pieces_;
    std::unordered_map<NameHash, Entry, FirstHalf> index_;
};

}  // namespace

int compareSets(const SetFiles& older, const SetFiles& newer, bool patch, bool json)
{
    const OpenedSet left(older);
    const OpenedSet right(newer);
    for (const OpenedSet* set : {&left, &right}) {
        if (!set->isOpen())
            return reportTrouble(onScreen(pathOf(set->files())) + ": " + set->trouble());
    }
    return Comparison(left, right, patch, json).run();
}

}  // namespace quillbox_set
