#include "archive/set_check.h"

#include "archive/fault_text.h"
#include "archive/image_check.h"
#include "archive/name_set.h"
#include "archive/seal.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>

namespace archive {

namespace {

// True if a file of the host can have the path.
bool isUsablePath(std::u16string_view path)
{
    bool good = path.starts_with(u'\\') && path.size() < MAX_PATH;
    while (good && !path.empty()) {
        path.remove_prefix(1);
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        good = platform::text::toHostName(path.substr(0, end)).has_value();
        path.remove_prefix(end);
    }
    return good;
}

// Checks one set. The members store the facts about earlier items that the check of an item needs.
class Verification {
public:
    Verification(ListedSet& set, const std::u16string& dataPath, CheckSink& sink)
        : set_(set), data_(dataPath, GENERIC_READ, OPEN_EXISTING), dataSize_(data_.isOpen() ? data_.size() : 0),
          sink_(sink)
    {
    }

    SetState run(const SealCheck& seal)
    {
        state_.isSealed = seal.isSealed;
        for (const std::string& fault : seal.faults)
            addFault(nullptr, fault);
        checkComment();
        if (!data_.isOpen())
            addFault(nullptr, notOpened("the data file", data_.error()));
        Item item;
        for (; set_.next(item); state_.items++) {
            sink_.item(item);
            checkKind(item);
            checkName(item);
            checkStream(item);
        }
        checkEnds();
        if (state_.items == 0)
            addWarning(nullptr, "the set is empty");
        return state_;
    }

private:
    void addFault(const Item* item, const std::string& reason)
    {
        state_.faults++;
        sink_.fault(item, reason);
    }

    void addWarning(const Item* item, const std::string& reason)
    {
        state_.warnings++;
        sink_.warning(item, reason);
    }

    void checkComment()
    {
        for (const std::string& fault : listFaultTexts(set_.commentFaults(), "the comment"))
            addFault(nullptr, "comment: " + fault);
    }

    void checkKind(const Item& item)
    {
        const BYTE kind = item.entry.kind;
        if (!IsItemKind(kind))
            addFault(&item, "there is no such kind");
        else if (kind < lastKind_)
            addFault(&item, "files come before databases, and the registry last");
        else if (kind == ItemKindRegistry && lastKind_ == ItemKindRegistry)
            addFault(&item, "the registry is there already");
        else
            lastKind_ = kind;
        if (item.entry.flag != 1)
            addFault(&item, "its second byte isn't 1");
    }

    void checkName(const Item& item)
    {
        for (const std::string& fault : listFaultTexts(item.entry.faults, "its name"))
            addFault(&item, fault);
        if (item.entry.faults != 0 || (!item.isFile() && !item.isDatabase()))
            return;
        if (item.name().empty())
            addFault(&item, "its name is empty");
        else if (!isUsableName(item))
            addFault(&item, "its name can't be used");
        else if (!names_.add(item.entry.kind, item.name()))
            addFault(&item, "an earlier item has the same name");
    }

    void checkStream(const Item& item)
    {
        const ListEntry& entry = item.entry;
        if (entry.faults & CutByEndOfFile)
            return;
        if (entry.startOffset != dataBytes_)
            addFault(&item, "it begins at offset " + std::to_string(entry.startOffset) +
                                ", but the item before it ends at " + std::to_string(dataBytes_));
        dataBytes_ = entry.endOffset;
        if (entry.endOffset < entry.startOffset)
            addFault(&item, "its end offset is before its start offset");
        else if (data_.isOpen() && entry.endOffset > dataSize_)
            addFault(&item, "its end offset is after the end of the data file");
        else if (data_.isOpen())
            checkContent(item);
    }

    void checkContent(const Item& item)
    {
        sink_.begin(item);
        const ContentReport content = readContent(data_, item, sink_);
        if (!content.fault.empty())
            addFault(&item, content.fault);
        sink_.end(item, content);
        if (!item.isDatabase() || item.entry.faults != 0)
            return;  // only a database has an image, and only a sound name can be compared with it
        for (const std::string& warning : imageWarnings(content.image, item.name()))
            addWarning(&item, warning);
    }

    void checkEnds()
    {
        if (set_.readFailed())
            addFault(nullptr, "the list file couldn't be read to its end");
        if (set_.isUnfinished())
            addFault(nullptr, "the set is unfinished");
        else if (set_.bytesAfterItems() != 0)
            addFault(nullptr, "the list file ends in 2 bytes that are no item");
        if (data_.isOpen() && dataSize_ != dataBytes_)
            addFault(nullptr, "the data file has " + std::to_string(dataSize_) + " bytes, but the items end at " +
                                  std::to_string(dataBytes_));
    }

    ListedSet& set_;
    OpenFile data_;
    std::uint64_t dataSize_;
    CheckSink& sink_;
    SetState state_;
    NameSet names_;
    BYTE lastKind_ = ItemKindFile;
    DWORD dataBytes_ = 0;  // end offset of the previous item
};

class FirstFault final : public CheckSink {
public:
    void fault(const Item* item, const std::string& reason) override
    {
        if (text.empty())
            text = item ? item->text() + ": " + reason : reason;
    }

    std::string text;
};

}  // namespace

bool isUsableName(const Item& item)
{
    return isUsablePath(item.isFile() ? std::u16string(item.name()) : u"\\" + std::u16string(item.name()) + u".CDB");
}

SetState checkSet(const OpenedSet& set, CheckSink& sink, SealUse seal)
{
    const SealCheck checked = seal == SealUse::Checked ? checkSeal(set.files(), set.mounted()) : SealCheck{};
    return Verification(set.list(), set.mounted().dataPath, sink).run(checked);
}

std::string firstFaultOf(const OpenedSet& set, SealUse seal)
{
    FirstFault fault;
    checkSet(set, fault, seal);
    return fault.text;
}

}  // namespace archive
