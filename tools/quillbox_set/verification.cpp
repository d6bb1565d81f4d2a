#include "verification.h"

#include "exit_code.h"
#include "fault_text.h"
#include "image_check.h"
#include "json_list.h"
#include "name_set.h"
#include "registry_check.h"
#include "screen_text/screen_text.h"
#include "set/stream_decoding.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace quillbox_set {

using screen_text::counted;

namespace {

// Prints faults and warnings, as lines or as elements of a JSON array.
class FaultReport {
public:
    explicit FaultReport(bool json)
    {
        if (json)
            list_.emplace(nlohmann::ordered_json::object(), "faults");
    }

    // `item` is null for a fault of the list file or the data file as a whole.
    void addFault(const Item* item, const std::string& reason)
    {
        faults_++;
        if (list_)
            list_->add(asJson(item, reason));
        else
            std::printf("%s%s\n", asText(item).c_str(), reason.c_str());
    }

    // For what isn't a fault, but can surprise the user. `item`: see addFault().
    void addWarning(const Item* item, const std::string& reason)
    {
        warnings_++;
        if (list_) {
            auto warning = asJson(item, reason);
            warning["warning"] = true;
            list_->add(warning);
        } else {
            std::printf("%swarning: %s\n", asText(item).c_str(), reason.c_str());
        }
    }

    int end(std::uint64_t items)
    {
        const std::string warned = warnings_ == 0 ? "" : ", " + counted(warnings_, "warning");
        if (list_)
            list_->end({{"warnings", warnings_}, {"items", items}, {"sound", faults_ == 0}});
        else if (faults_ == 0)
            std::printf("Sound: %s%s.\n", counted(items, "item").c_str(), warned.c_str());
        else
            std::printf("Unsound: %s in %s%s.\n", counted(faults_, "fault").c_str(), counted(items, "item").c_str(),
                        warned.c_str());
        return faults_ == 0 ? exitGood : exitFaults;
    }

private:
    static std::string asText(const Item* item)
    {
        if (!item)
            return "";
        return "item " + std::to_string(item->number) + ", " + item->text() + ": ";
    }

    static nlohmann::ordered_json asJson(const Item* item, const std::string& reason)
    {
        nlohmann::ordered_json fault = nlohmann::ordered_json::object();
        if (item)
            fault = {{"item", item->number},
                     {"kind", item->kindText()},
                     {"name", platform::text::toUtf8(item->shownName())}};
        fault["reason"] = reason;
        return fault;
    }

    std::optional<JsonList> list_;
    std::uint64_t faults_ = 0;
    std::uint64_t warnings_ = 0;
};

// One verification. Its state is what is known from the earlier items.
class Verification {
public:
    Verification(ListedSet& set, const std::u16string& dataPath, bool json)
        : set_(set), data_(dataPath, GENERIC_READ, OPEN_EXISTING), dataSize_(data_.isOpen() ? data_.size() : 0),
          report_(json)
    {
    }

    int run()
    {
        checkComment();
        if (!data_.isOpen())
            report_.addFault(nullptr, "the data file is missing or can't be opened");
        Item item;
        std::uint64_t items = 0;
        for (; set_.next(item); items++) {
            checkKind(item);
            checkName(item);
            checkStream(item);
        }
        checkEnds();
        if (items == 0)
            report_.addWarning(nullptr, "the set is empty");
        return report_.end(items);
    }

private:
    void checkComment()
    {
        for (const std::string& fault : listFaultTexts(set_.commentFaults(), "the comment"))
            report_.addFault(nullptr, "comment: " + fault);
    }

    void checkKind(const Item& item)
    {
        const BYTE kind = item.entry.kind;
        if (!IsItemKind(kind))
            report_.addFault(&item, "there is no such kind");
        else if (kind < lastKind_)
            report_.addFault(&item, "files come before databases, and the registry last");
        else if (kind == ItemKindRegistry && lastKind_ == ItemKindRegistry)
            report_.addFault(&item, "the registry is there already");
        else
            lastKind_ = kind;
        if (item.entry.flag != 1)
            report_.addFault(&item, "its second byte isn't 1");
    }

    void checkName(const Item& item)
    {
        for (const std::string& fault : listFaultTexts(item.entry.faults, "its name"))
            report_.addFault(&item, fault);
        if (item.entry.faults != 0 || (!item.isFile() && !item.isDatabase()))
            return;
        if (item.name().empty())
            report_.addFault(&item, "its name is empty");
        else if (!isUsable(item))
            report_.addFault(&item, "its name can't be used");
        else if (!names_.add(item.entry.kind, item.name()))
            report_.addFault(&item, "an earlier item has the same name");
    }

    // A restore makes a temporary file \NAME.CDB for a database.
    static bool isUsable(const Item& item)
    {
        return isUsablePath(item.isFile() ? std::u16string(item.name())
                                          : u"\\" + std::u16string(item.name()) + u".CDB");
    }

    // True if a file of the host can have the path.
    static bool isUsablePath(std::u16string_view path)
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

    void checkStream(const Item& item)
    {
        const ListEntry& entry = item.entry;
        if (entry.faults & CutByEndOfFile)
            return;
        if (entry.startOffset != dataBytes_)
            report_.addFault(&item, "it begins at offset " + std::to_string(entry.startOffset) +
                                        ", but the item before it ends at " + std::to_string(dataBytes_));
        dataBytes_ = entry.endOffset;
        if (entry.endOffset < entry.startOffset)
            report_.addFault(&item, "its end offset is before its start offset");
        else if (data_.isOpen() && entry.endOffset > dataSize_)
            report_.addFault(&item, "its end offset is after the end of the data file");
        else if (data_.isOpen() && item.isDatabase())
            checkDatabase(item);
        else if (data_.isOpen() && item.isRegistry())
            addFaultIfAny(item, checkRegistry(data_, entry).fault);
        else if (data_.isOpen())
            decode(item);
    }

    void checkDatabase(const Item& item)
    {
        const ImageReport image = checkImage(data_, item.entry);
        addFaultIfAny(item, image.fault);
        if (item.entry.faults != 0)
            return;  // the name can't be compared
        for (const std::string& warning : imageWarnings(image, item.name()))
            report_.addWarning(&item, warning);
    }

    void addFaultIfAny(const Item& item, const std::string& fault)
    {
        if (!fault.empty())
            report_.addFault(&item, fault);
    }

    void decode(const Item& item)
    {
        const StreamFault fault =
            DecodeStream(data_.handle(), item.entry.startOffset, item.entry.endOffset, nullptr, nullptr);
        if (fault != StreamFault::None)
            report_.addFault(&item, streamFaultText(fault));
    }

    void checkEnds()
    {
        if (set_.readFailed())
            report_.addFault(nullptr, "the list file couldn't be read to its end");
        if (set_.bytesAfterItems() != 0)
            report_.addFault(nullptr, set_.bytesAfterItems() == 1 ? "the list file ends in 1 byte that is no item"
                                                                  : "the list file ends in 2 bytes that are no item");
        if (data_.isOpen() && dataSize_ != dataBytes_)
            report_.addFault(nullptr, "the data file has " + std::to_string(dataSize_) +
                                          " bytes, but the items end at " + std::to_string(dataBytes_));
    }

    ListedSet& set_;
    OpenFile data_;
    std::uint64_t dataSize_;
    FaultReport report_;
    NameSet names_;
    BYTE lastKind_ = ItemKindFile;
    DWORD dataBytes_ = 0;  // end offset of the previous item
};

}  // namespace

int verifySet(ListedSet& set, const MountedSet& files, bool json)
{
    return Verification(set, files.dataPath, json).run();
}

}  // namespace quillbox_set
