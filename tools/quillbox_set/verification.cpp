// verification.cpp - see verification.h.

#include "verification.h"

#include "exit_code.h"
#include "fault_text.h"
#include "image_check.h"
#include "json_list.h"
#include "listed_set.h"
#include "name_set.h"
#include "registry_check.h"
#include "screen_text/screen_text.h"
#include "set/stream_decoding.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <optional>

namespace quillbox_set {

using screen_text::counted;

namespace {

// Where the faults go: lines or an array.
class FaultReport {
public:
    explicit FaultReport(bool json)
    {
        if (json)
            list_.emplace(nlohmann::ordered_json::object(), "faults");
    }

    // `item` null: the fault is the list's or the data file's as a whole.
    void tell(const Item* item, const std::string& reason)
    {
        faults_++;
        if (list_)
            list_->add(asJson(item, reason));
        else
            std::printf("%s%s\n", asText(item).c_str(), reason.c_str());
    }

    // `item` as for tell. Nothing is wrong with the set, but its user may be surprised.
    void warn(const Item* item, const std::string& reason)
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

// What one verification knows of the items before the one that it looks at.
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
            report_.tell(nullptr, "the data file is missing or can't be opened");
        Item item;
        std::uint64_t items = 0;
        for (; set_.next(item); items++) {
            checkKind(item);
            checkName(item);
            checkStream(item);
        }
        checkEnds();
        if (items == 0)
            report_.warn(nullptr, "the set is empty");
        return report_.end(items);
    }

private:
    void checkComment()
    {
        for (const std::string& fault : listFaultTexts(set_.commentFaults(), "the comment"))
            report_.tell(nullptr, "comment: " + fault);
    }

    void checkKind(const Item& item)
    {
        const BYTE kind = item.entry.kind;
        if (!IsItemKind(kind))
            report_.tell(&item, "there is no such kind");
        else if (kind < lastKind_)
            report_.tell(&item, "files come before databases, and the registry last");
        else if (kind == ItemKindRegistry && lastKind_ == ItemKindRegistry)
            report_.tell(&item, "the registry is there already");
        else
            lastKind_ = kind;
        if (item.entry.flag != 1)
            report_.tell(&item, "its second byte isn't 1");
    }

    void checkName(const Item& item)
    {
        for (const std::string& fault : listFaultTexts(item.entry.faults, "its name"))
            report_.tell(&item, fault);
        if (item.entry.faults != 0 || (!item.isFile() && !item.isDatabase()))
            return;
        if (item.name().empty())
            report_.tell(&item, "its name is empty");
        else if (!isUsable(item))
            report_.tell(&item, "its name can't be used");
        else if (!names_.add(item.entry.kind, item.name()))
            report_.tell(&item, "an item before has the same name");
    }

    // A restore brings a database by way of its image, the file \NAME.CDB.
    static bool isUsable(const Item& item)
    {
        return isUsablePath(item.isFile() ? std::u16string(item.name())
                                          : u"\\" + std::u16string(item.name()) + u".CDB");
    }

    // Whether a file of this host can have the path.
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
            report_.tell(&item, "it begins at " + std::to_string(entry.startOffset) + ", the one before ends at " +
                                    std::to_string(dataBytes_));
        dataBytes_ = entry.endOffset;
        if (entry.endOffset < entry.startOffset)
            report_.tell(&item, "its end offset lies before its start offset");
        else if (data_.isOpen() && entry.endOffset > dataSize_)
            report_.tell(&item, "its end offset lies behind the data file's end");
        else if (data_.isOpen() && item.isDatabase())
            checkDatabase(item);
        else if (data_.isOpen() && item.isRegistry())
            tellIfAny(item, checkRegistry(data_, entry).fault);
        else if (data_.isOpen())
            decode(item);
    }

    void checkDatabase(const Item& item)
    {
        const ImageReport image = checkImage(data_, item.entry);
        tellIfAny(item, image.fault);
        if (item.entry.faults != 0)
            return;  // there is no name to compare with
        for (const std::string& warning : imageWarnings(image, item.name()))
            report_.warn(&item, warning);
    }

    void tellIfAny(const Item& item, const std::string& fault)
    {
        if (!fault.empty())
            report_.tell(&item, fault);
    }

    void decode(const Item& item)
    {
        const StreamFault fault =
            DecodeStream(data_.handle(), item.entry.startOffset, item.entry.endOffset, nullptr, nullptr);
        if (fault != StreamFault::None)
            report_.tell(&item, streamFaultText(fault));
    }

    void checkEnds()
    {
        if (set_.readFailed())
            report_.tell(nullptr, "the list file couldn't be read to its end");
        if (set_.bytesBehindItems() != 0)
            report_.tell(nullptr, set_.bytesBehindItems() == 1 ? "the list file ends in 1 byte that is no item"
                                                               : "the list file ends in 2 bytes that are no item");
        if (data_.isOpen() && dataSize_ != dataBytes_)
            report_.tell(nullptr, "the data file has " + std::to_string(dataSize_) + " bytes, the items end at " +
                                      std::to_string(dataBytes_));
    }

    ListedSet& set_;
    OpenFile data_;
    std::uint64_t dataSize_;
    FaultReport report_;
    NameSet names_;
    BYTE lastKind_ = ItemKindFile;
    DWORD dataBytes_ = 0;  // where the item before ends
};

}  // namespace

int verifySet(const MountedSet& set, bool json)
{
    ListedSet list(set);
    if (!list.isOpen()) {
        std::cerr << "quillbox-set: the list file can't be opened\n";
        return exitNoSet;
    }
    return Verification(list, set.dataPath, json).run();
}

}  // namespace quillbox_set
