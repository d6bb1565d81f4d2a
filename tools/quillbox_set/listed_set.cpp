#include "listed_set.h"

#include "screen_text/screen_text.h"

#include "ce/file.h"

namespace quillbox_set {

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

ListedSet::ListedSet(const MountedSet& set)
    : list_(set.listPath, GENERIC_READ, OPEN_EXISTING), reader_(std::make_unique<ListReader>())
{
    StartListReader(*reader_, list_.handle());
    if (isOpen())
        commentFaults_ = ReadListHead(*reader_, comment_);
}

bool ListedSet::next(Item& item)
{
    if (!ReadListEntry(*reader_, item.entry))
        return false;
    item.number = ++items_;
    return true;
}

}  // namespace quillbox_set
