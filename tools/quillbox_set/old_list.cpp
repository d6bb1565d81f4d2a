#include "old_list.h"

#include "set/block_codec.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <tuple>

namespace quillbox_set {

using namespace archive;

namespace {

// The number of entries that add() tests to decide whether a number must be added to all offsets of a list (see add()
// in old_list.h).
constexpr std::size_t SampledEntries = 1000;

bool isUndamaged(const ListEntry& entry)
{
    return entry.faults == 0 && IsItemKind(entry.kind) && entry.endOffset > entry.startOffset;
}

}  // namespace

void OldLists::add(ListedSet& list)
{
    std::vector<OldEntry> entries;
    std::uint64_t last = 0;
    for (Item item; list.next(item);) {
        if (!isUndamaged(item.entry))
            continue;
        const std::u16string_view name = item.isRegistry() ? u"registry" : item.name();
        entries.push_back({item.entry.startOffset, item.entry.endOffset, item.entry.kind, std::u16string(name)});
        last = std::max<std::uint64_t>(last, item.entry.endOffset);
    }
    const std::uint64_t size = data_.size();
    const std::uint64_t shift = size > last ? size - last : 0;
    if (shift != 0 && agreeing(entries, shift) > agreeing(entries, 0)) {
        for (OldEntry& entry : entries) {
            entry.start += shift;
            entry.end += shift;
        }
    }
    for (const OldEntry& entry : entries)
        names_.add(entry.kind, entry.name);
    std::ranges::move(entries, std::back_inserter(entries_));
}

void OldLists::sort()
{
    const auto key = [](const OldEntry& entry) { return std::tie(entry.start, entry.end, entry.kind, entry.name); };
    std::ranges::stable_sort(entries_, {}, key);
    const auto isTwice = [&](const OldEntry& left, const OldEntry& right) { return key(left) == key(right); };
    entries_.erase(std::unique(entries_.begin(), entries_.end(), isTwice), entries_.end());
}

OldEntry* OldLists::of(std::uint64_t start, std::uint64_t end, bool isWhole)
{
    auto entry = std::ranges::lower_bound(entries_, start, {}, &OldEntry::start);
    for (; entry != entries_.end() && entry->start == start; ++entry) {
        if (isWhole ? entry->end == end : entry->end >= end)
            return &*entry;
    }
    return nullptr;
}

// Returns whether a stream begins at the offset, or the file ends there.
bool OldLists::isBoundary(std::uint64_t offset) const
{
    if (offset == data_.size())
        return true;
    auto high = static_cast<LONG>(offset >> 32);
    (void)SetFilePointer(data_.handle(), static_cast<LONG>(offset), &high, FILE_BEGIN);
    BYTE magic[StreamMagicBytes] = {};
    DWORD bytes = 0;
    return ReadFile(data_.handle(), magic, StreamMagicBytes, &bytes, nullptr) &&
           std::memcmp(magic, StreamMagic, StreamMagicBytes) == 0;
}

std::size_t OldLists::agreeing(const std::vector<OldEntry>& entries, std::uint64_t shift) const
{
    const auto sampled = static_cast<std::ptrdiff_t>(std::min(entries.size(), SampledEntries));
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.begin() + sampled, [&](const OldEntry& entry) {
            return isBoundary(entry.start + shift) && isBoundary(entry.end + shift);
        }));
}

}  // namespace quillbox_set
