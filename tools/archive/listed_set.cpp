#include "archive/listed_set.h"

#include "archive/long_work.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>

namespace archive {

std::string Item::kindText() const
{
    return IsItemKind(entry.kind) ? KindOf(entry.kind).word : "kind " + std::to_string(entry.kind);
}

std::string Item::text() const
{
    return isRegistry() ? kindText() : kindText() + " " + screen_text::onScreen(name());
}

DWORD Item::packedBytes() const
{
    return entry.endOffset > entry.startOffset ? entry.endOffset - entry.startOffset : 0;
}

std::u16string nameFromUser(const std::string& typed)
{
    std::u16string name = platform::text::fromUtf8(typed);
    std::ranges::replace(name, u'/', u'\\');
    return name;
}

ListedSet::ListedSet(const MountedSet& set)
    : list_(set.listPath, GENERIC_READ, OPEN_EXISTING), reader_(std::make_unique<ListReader>())
{
    StartListReader(*reader_, list_.handle());
    if (isOpen())
        commentFaults_ = ReadListHead(*reader_, comment_);
}

bool ListedSet::next(Item& item)
{
    checkStop();
    if (!ReadListEntry(*reader_, item.entry))
        return false;
    item.number = ++items_;
    itemFaults_ |= item.entry.faults;
    return true;
}

std::string ListedSet::missingItems() const
{
    if (readFailed())
        return "the list file couldn't be read to its end";
    if (isUnfinished())
        return "the set is unfinished, so items may be missing";
    const bool isCut = ((commentFaults_ | itemFaults_) & CutByEndOfFile) != 0 || bytesAfterItems() != 0;
    return isCut ? "the list file is cut off, so items may be missing" : "";
}

// Searches the buffer for the next occurrence of `part`. Skips the entries that end before this occurrence, and doesn't
// read them. If the buffer doesn't contain `part`, skips all complete entries in the buffer. In both cases the skipping
// ends early at the registry's entry or at an entry with an invalid length, whichever comes first. next() then reads
// the entry after the skipped ones.
bool ListedSet::nextWith(std::u16string_view part, Item& item)
{
    const BYTE* const end = reader_->buffer + reader_->filled;
    const BYTE* const begin = reader_->buffer + reader_->next;
    const void* const hit =
        ::memmem(begin, static_cast<std::size_t>(end - begin), part.data(), part.size() * sizeof(char16_t));
    items_ += SkipListEntries(*reader_, hit ? static_cast<const BYTE*>(hit) : end);
    return next(item);
}

}  // namespace archive
