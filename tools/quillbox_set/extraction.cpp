#include "extraction.h"

#include "archive/fault_text.h"
#include "archive/growing_file.h"
#include "archive/image_check.h"
#include "archive/item_content.h"
#include "archive/item_target.h"
#include "archive/name_set.h"
#include "database_file.h"
#include "exit_code.h"
#include "json_list.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "set/stream_decoding.h"
#include "text/host_name.h"
#include "text/wildcard.h"

#include "ce/file.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

namespace quillbox_set {

using namespace archive;

using platform::text::matchesWildcards;
using screen_text::counted;
using screen_text::onScreen;

namespace {

class Extraction {
public:
    Extraction(ListedSet& set, const MountedSet& files, const ExtractionOptions& options)
        : set_(set), files_(files), options_(options), data_(files.dataPath, GENERIC_READ, OPEN_EXISTING)
    {
        for (const std::string& name : options.names)
            wanted_.push_back({nameFromUser(name), false});
        if (options.json)
            list_.emplace(nlohmann::ordered_json::object(), "items");
    }

    int run()
    {
        if (data_.isOpen())
            extractWanted();
        else
            reportFault(notOpened("the data file", data_.error()));
        flush();
        if (list_)
            list_->end({{"written", written_}, {"faults", faults_}});
        else
            std::cout << counted(written_, "item") << " written, " << counted(faults_, "fault") << ".\n";
        return faults_ == 0 ? exitGood : exitFaults;
    }

private:
    struct Wanted {
        std::u16string pattern;
        bool found;
    };

    void extractWanted()
    {
        Item item;
        while (set_.next(item)) {
            if (isWanted(item))
                extract(item);
        }
        if (const std::string fault = set_.missingItems(); !fault.empty())
            reportFault(fault);
        for (const Wanted& wanted : wanted_) {
            if (!wanted.found)
                reportFault("the set has no item " + onScreen(wanted.pattern));
        }
    }

    void flush()
    {
        if (!FlushChangedVolumes())
            reportFault("what was written may be missing from the disk: " + errorText(GetLastError()));
    }

    void reportFault(const std::string& what)
    {
        faults_++;
        std::cerr << "quillbox-set: " << what << "\n";
    }

    bool isWanted(const Item& item)
    {
        bool any = wanted_.empty();
        for (Wanted& wanted : wanted_) {
            if (matchesWildcards(item.shownName(), wanted.pattern, platform::text::Case::Counts))
                any = wanted.found = true;
        }
        return any;
    }

    void extract(const Item& item)
    {
        std::optional<std::uint64_t> kept;  // size of the file. Nothing if none was written.
        const std::string fault = tryToExtract(item, kept);
        const std::uint64_t bytes = kept.value_or(0);
        (fault.empty() ? written_ : faults_)++;
        if (kept)
            targets_.add(0, targetOf(item, options_.format));
        if (list_) {
            list_->add(
                {{"kind", item.kindText()},
                 {"name", platform::text::toUtf8(item.shownName())},
                 {"target", kept ? jsonText(hostPathOf(options_.folder, targetOf(item, options_.format))) : nullptr},
                 {"bytes", bytes},
                 {"fault", fault.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(fault)}});
        } else if (fault.empty()) {
            std::cout << item.text() << ": " << counted(bytes, "byte") << '\n';
        } else {
            std::cerr << "quillbox-set: " << item.text() << ": " << fault << '\n';
        }
    }

    // Returns an empty text if the whole item was written, otherwise the reason why it wasn't. Sets `bytes` to the size
    // of the file if one was written.
    std::string tryToExtract(const Item& item, std::optional<std::uint64_t>& bytes)
    {
        const std::u16string target = targetOf(item, options_.format);
        if (std::string fault = targetFault(item); !fault.empty())
            return fault;
        if (leadsInto(target, files_.folder))
            return errorText(ERROR_INVALID_NAME);
        if (targets_.has(0, target))
            return "an earlier item was written to the same file";
        if (!options_.force && !IsNothingAt(target.c_str()) &&
            GetFileAttributesW(target.c_str()) != INVALID_FILE_ATTRIBUTES)
            return errorText(ERROR_ALREADY_EXISTS);
        if (options_.format && item.isDatabase())
            return extractDatabase(target, item, bytes);
        // A truncated .reg file looks complete, so the registry is checked before it is written.
        std::string damage;
        ContentSink ignored;
        if (options_.format && item.isRegistry())
            damage = readContent(data_, item, ignored).fault;
        if (!damage.empty() && !options_.keepDamaged)
            return damage;
        return copyTo(target, item, damage, bytes);
    }

    std::string extractDatabase(const std::u16string& path, const Item& item, std::optional<std::uint64_t>& bytes) const
    {
        const ImageReport image = checkImage(data_, item.entry);
        const std::size_t records = image.hasHead() ? image.ends.size() - 1 : 0;
        if (!image.fault.empty() && (!options_.keepDamaged || records == 0))
            return image.fault;
        if (std::string fault =
                writeDatabaseFile(data_, item.entry, image, {*options_.format, path, options_.force}, bytes);
            !fault.empty())
            return fault;
        return image.fault.empty() ? "" : image.fault + "; " + counted(records, "record") + " kept";
    }

    // Writes the unpacked bytes of the item. `damage` is the fault that the caller has found in the content, or empty
    // if the caller has found none. Returns and sets the same as tryToExtract().
    std::string copyTo(const std::u16string& path, const Item& item, const std::string& damage,
                       std::optional<std::uint64_t>& bytes)
    {
        GrowingFile target(path);
        const StreamFault fault =
            DecodeStream(data_.handle(), item.entry.startOffset, item.entry.endOffset, GrowingFile::writeRaw, &target);
        if (fault == StreamFault::StoppedBySink)
            return errorText(target.error());
        std::string reason = fault == StreamFault::None ? damage : streamFaultText(fault);
        // An empty file of a damaged item would look like a file that was always empty. So the empty file isn't kept.
        if (!reason.empty() && (!options_.keepDamaged || target.bytes() == 0))
            return reason;
        if (target.moveToTarget(options_.force) != ERROR_SUCCESS)
            return errorText(target.error());
        bytes = target.bytes();
        return reason.empty() ? "" : reason + "; " + counted(*bytes, "byte") + " kept";
    }

    ListedSet& set_;
    const MountedSet& files_;
    const ExtractionOptions& options_;
    OpenFile data_;
    std::vector<Wanted> wanted_;
    NameSet targets_;  // paths of the files written so far. Two databases can have the same path.
    std::optional<JsonList> list_;
    std::uint64_t written_ = 0;
    std::uint64_t faults_ = 0;
};

}  // namespace

int extractItems(ListedSet& set, const MountedSet& files, const ExtractionOptions& options)
{
    return Extraction(set, files, options).run();
}

}  // namespace quillbox_set
