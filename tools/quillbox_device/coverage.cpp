#include "coverage.h"

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_check.h"
#include "archive/set_date.h"
#include "archive/set_search.h"
#include "device_content.h"
#include "device_copy.h"
#include "device_files.h"
#include "failure.h"
#include "report.h"
#include "screen_text/screen_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <optional>

#include <unistd.h>

namespace quillbox_device {

namespace fs = std::filesystem;
using namespace archive;
using screen_text::counted;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

// Compares the files of one set with those of the device, byte for byte, while the set is checked. Collects the
// databases and the registry of the set, which are compared afterwards.
class SetComparison final : public CheckSink {
public:
    SetComparison(const DeviceFiles& files, const std::vector<bool>& isCovered, DeviceContent& content,
                  Progress& progress)
        : files_(files), isCovered_(isCovered), content_(content), progress_(progress)
    {
    }

    void begin(const Item& item) override
    {
        progress_.at(item.number, 0);
        file_.reset();
        if (item.isDatabase())
            content_.beginDatabase();
        if (item.isRegistry())
            content_.beginRegistry();
        const auto found = item.isFile() ? files_.find(item.name()) : std::nullopt;
        if (!found || isCovered_[*found] || !files_.all()[*found].fault.empty())
            return;
        file_ = *found;
        opened_ = files_.open(*found);
        isEqual_ = static_cast<bool>(opened_);
    }

    bool bytes(std::span<const std::byte> piece) override
    {
        if (!file_ || !isEqual_)
            return true;  // goes on, so that the whole set is checked
        buffer_.resize(std::max(buffer_.size(), piece.size() + 1));
        isEqual_ = readUpTo(piece.size()) && std::memcmp(buffer_.data(), piece.data(), piece.size()) == 0;
        return true;
    }

    void head(const ImageReport& image) override { content_.head(image); }
    void record(unsigned number, std::span<const CEPROPVAL> properties) override
    {
        content_.record(number, properties);
    }
    bool key(const platform::registry::KeyPath& path) override { return content_.key(path); }
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override
    {
        return content_.value(name, type, data);
    }

    void end(const Item& item, const ContentReport& content) override
    {
        if (item.isDatabase())
            content_.endDatabase();
        buffer_.resize(std::max<std::size_t>(buffer_.size(), 1));
        if (file_ && isEqual_ && content.fault.empty() && isAtEnd())
            equal_.push_back(*file_);
        opened_ = {};
    }

    // Returns the indexes of the device's files that the set contains and that weren't covered before this comparison.
    // The indexes are valid only if the set is undamaged.
    const std::vector<std::size_t>& equal() const { return equal_; }

private:
    bool readUpTo(std::size_t bytes)
    {
        std::size_t done = 0;
        while (done < bytes) {
            const ssize_t read = ::read(opened_.get(), buffer_.data() + done, bytes - done);
            if (read <= 0)
                return false;
            done += static_cast<std::size_t>(read);
        }
        return true;
    }

    bool isAtEnd() { return ::read(opened_.get(), buffer_.data(), 1) == 0; }

    const DeviceFiles& files_;
    const std::vector<bool>& isCovered_;
    DeviceContent& content_;
    Progress& progress_;
    std::optional<std::size_t> file_;  // the file that is compared now
    platform::host::Descriptor opened_;
    bool isEqual_ = false;
    std::vector<std::byte> buffer_;
    std::vector<std::size_t> equal_;
};

class Coverage {
public:
    Coverage(const fs::path& device, bool json)
        : device_(device), files_(device), copy_(device), isCovered_(files_.all().size(), false),
          report_(json, {"files", "databases", "values", "changes", "sets"})
    {
        content_.readDevice();
    }

    void compareWith(const FoundSets& found)
    {
        SetDates dates(found.sets);
        std::vector<std::size_t> order = byDate(dates, found.sets.size());
        std::ranges::reverse(order);
        Progress progress(order.size());
        for (const std::size_t at : order) {
            if (isComplete())
                break;
            progress.begin(pathOf(found.sets[at]));
            compareWith(found.sets[at], progress);
            if (at == order.front())
                leaveOutRom();
        }
    }

    // Prints the results and returns the exit code.
    int finish()
    {
        std::uint64_t open = 0;
        for (std::size_t at = 0; at < isCovered_.size(); at++) {
            const DeviceFile& file = files_.all()[at];
            if (isCovered_[at])
                continue;
            open++;
            report_.add("files", {{"path", "/" + file.path}, {"fault", file.fault.empty() ? Json() : Json(file.fault)}},
                        "not covered: file /" + onScreen(std::string_view(file.path)) +
                            (file.fault.empty() ? "" : ": " + file.fault));
        }
        open += content_.reportUncovered(report_);
        for (const std::string& path : files_.changedSince()) {
            open++;
            report_.add("changes", "/" + path, "changed meanwhile: file /" + onScreen(std::string_view(path)));
        }
        if (copy_.isOutdated()) {
            open++;
            report_.add("changes", "databases and registry", "changed meanwhile: the databases and the registry");
        }
        for (const auto& [element, text] : summary_)
            report_.add("sets", element, text);
        content_.reportNotes(report_);
        report_.set("romFileCount", filesInRom_,
                    filesInRom_ == 0 ? ""
                                     : counted(filesInRom_, "file") + " of the device's ROM " +
                                           (filesInRom_ == 1 ? "isn't" : "aren't") +
                                           " compared, because no backup stores what is in ROM.");
        report_.set("uncoveredCount", open,
                    open == 0 ? "Everything is covered." : "Not covered: " + counted(open, "thing") + ".");
        report_.finish();
        return open == 0 ? exitGood : exitFailed;
    }

private:
    bool isComplete() const { return content_.isCovered() && std::ranges::find(isCovered_, false) == isCovered_.end(); }

    // Returns whether the set is stored on the device. Erasing the device would erase such a set too, so the command
    // ignores the set.
    bool isOnDevice(const SetFiles& set) const
    {
        std::error_code error;
        const std::string store = fs::canonical(device_ / "object-store", error).string() + "/";
        return (set.folder + "/").starts_with(store);
    }

    void compareWith(const SetFiles& files, Progress& progress)
    {
        const std::string path = onScreen(std::string_view(pathOf(files)));
        if (isOnDevice(files))
            return note(progress, path + ": is on the device itself, so it doesn't count");
        const OpenedSet set(files);
        if (!set.isOpen())
            return note(progress, path + ": " + set.trouble());
        content_.beginSet();
        SetComparison comparison(files_, isCovered_, content_, progress);
        if (!checkSet(set, comparison).isSound())
            return note(progress, path + ": is unsound, so it doesn't count; see `quillbox-set verify`");
        for (const std::size_t file : comparison.equal())
            isCovered_[file] = true;
        const HeldContent held = content_.takeSet();
        const std::size_t equal = comparison.equal().size();
        if (equal == 0 && held.records == 0 && held.places == 0)
            return;
        std::string text = path + ": holds " + counted(equal, "file");
        if (held.records != 0)
            text += ", " + counted(held.records, "record");
        if (held.places != 0)
            text += ", " + std::to_string(held.places) + " keys and values of the registry";
        summary_.push_back(
            {{{"set", pathOf(files)}, {"fileCount", equal}, {"recordCount", held.records}, {"valueCount", held.places}},
             text});
    }

    // No backup stores a file in ROM, so such a file counts as covered. A set can contain the file nevertheless, if the
    // file wasn't in ROM when the set was made. So this function is called after the comparison with the newest set,
    // and looks only at the files that this set doesn't cover.
    void leaveOutRom()
    {
        for (const std::size_t file : files_.inRom(isCovered_)) {
            isCovered_[file] = true;
            filesInRom_++;
        }
    }

    static void note(Progress& progress, const std::string& text)
    {
        progress.clear();
        std::cerr << "quillbox-device: " << text << '\n';
    }

    fs::path device_;
    DeviceFiles files_;
    DeviceCopy copy_;
    DeviceContent content_;
    std::vector<bool> isCovered_;  // for each of files_.all(): whether a set contains the file, or it is in ROM
    std::size_t filesInRom_ = 0;
    Report report_;
    std::vector<std::pair<Json, std::string>> summary_;  // one for each set that contains something of the device
};

}  // namespace

int showCoverage(const fs::path& device, const std::vector<std::string>& where, bool recursive, bool json)
{
    const FoundSets found = searchSets(where, recursive);
    for (const std::string& fault : found.faults)
        std::cerr << "quillbox-device: " << fault << '\n';
    if (found.sets.empty())
        throw Failure("There is no set to compare with.", exitBadUsage);
    Coverage coverage(device, json);
    coverage.compareWith(found);
    return coverage.finish();
}

}  // namespace quillbox_device
