#include "salvage.h"

#include "archive/fault_text.h"
#include "archive/seal.h"
#include "archive/set_files.h"
#include "archive/set_search.h"
#include "exit_code.h"
#include "recovered_items.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "file/name_space.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include <unistd.h>

namespace quillbox_set {

using namespace archive;
using screen_text::counted;
using screen_text::onScreen;

namespace {

namespace fs = std::filesystem;

// The sets of one call of `salvage`, and the folders that are mounted for them. Declare the Work before each OpenFile.
// The files are then closed before the folders are unmounted.
struct Work {
    SetFiles files;
    SetFiles newFiles;
    std::unique_ptr<SetMount> mount;     // of the data file
    std::unique_ptr<SetMount> newMount;  // of the new set; null if no new set is wanted
    std::u16string comment;              // for the new set
};

bool exists(const std::string& folder, const std::string& name)
{
    std::error_code error;
    return fs::symlink_status(fs::path(folder) / name, error).type() != fs::file_type::not_found;
}

// The folder into which the recovered files are written. The constructor makes this folder and its parent folders, as
// far as they are missing. The destructor deletes those of the new folders that are still empty. The destructor also
// runs after a signal.
class TargetFolder {
public:
    explicit TargetFolder(const std::string& folder)
    {
        std::error_code error;
        platform::file::prepareProcess();
        fs::path path;
        for (const fs::path& part : fs::absolute(folder, error)) {
            path /= part;
            std::error_code ignored;
            if (!error && !fs::is_directory(path, ignored) && fs::create_directory(path, error))
                made_.insert(made_.begin(), path);
        }
        const bool isEmpty = !error && fs::is_empty(folder, error);
        if (error)
            trouble_ = "a folder can't be made or opened: " + onScreen(std::string_view(folder));
        else if (!isEmpty)
            trouble_ = "the folder isn't empty: " + onScreen(std::string_view(folder));
    }
    TargetFolder(const TargetFolder&) = delete;
    TargetFolder& operator=(const TargetFolder&) = delete;
    ~TargetFolder()
    {
        for (const fs::path& path : made_)
            (void)::rmdir(path.c_str());  // fails for a folder that isn't empty
    }

    // Why the folder can't be used. Empty if it can.
    const std::string& trouble() const { return trouble_; }

private:
    std::string trouble_;
    std::vector<fs::path> made_;  // the innermost one first
};

// Checks before the long work that none of the new set's files exists, and mounts their folder. Returns an empty text,
// or the reason of a failure.
std::string prepareSet(const SalvageOptions& options, Work& work)
{
    if (options.set.empty())
        return "";
    const fs::path name = fs::path(options.set).filename();
    if (name.empty() || name == "." || name == "..")
        return "the new set needs a name, not only a folder: " + onScreen(std::string_view(options.set));
    work.newFiles = newSet(options.set);
    const SetFiles& files = work.newFiles;
    for (const std::string& name : {files.listName, files.dataName, files.sumName}) {
        if (exists(files.folder, name))
            return "exists already: " + onScreen(std::string_view(files.folder + "/" + name));
    }
    work.newMount = std::make_unique<SetMount>(files, options.folder);
    return *work.newMount ? ""
                          : "the folder of the new set can't be opened: " + onScreen(std::string_view(files.folder));
}

std::string readLists(const SalvageOptions& options, OldLists& lists, Work& work)
{
    for (const std::string& argument : options.lists) {
        const std::optional<SetFiles> files = findSet(argument);
        const SetMount mount(files.value_or(SetFiles{}), options.folder);
        std::optional<ListedSet> list;
        if (files && mount)
            list.emplace(*mount);
        if (!list || !list->isOpen())
            return "the list file can't be opened: " + onScreen(std::string_view(argument));
        lists.add(*list);
        if (work.comment.empty() && list->commentFaults() == 0)
            work.comment = list->comment();
    }
    lists.sort();
    return "";
}

std::string lackOf(const std::vector<std::u16string>& names)
{
    constexpr std::size_t MostNames = 20;
    if (names.empty())
        return "";
    std::string text = " It lacks " + counted(names.size(), "item") + ", which couldn't be read a second time";
    for (std::size_t at = 0; at < std::min(names.size(), MostNames); at++)
        text += (at == 0 ? ": " : ", ") + onScreen(names[at]);
    return text + (names.size() > MostNames ? " and " + std::to_string(names.size() - MostNames) + " more." : ".");
}

NewSetResult writeSet(const Work& work, const OpenFile& data, NewSet& set)
{
    const std::u16string comment =
        work.comment.empty() ? u"Recovered from " + platform::text::fromUtf8(work.files.dataName) : work.comment;
    const std::string fault = set.write(data, **work.newMount, comment);
    const std::string said = fault.empty() ? "The new set has " + counted(set.items(), "item") + "."
                                           : "The new set can't be written: " + fault + ".";
    return {fault.empty() ? pathOf(work.newFiles) : "", said + lackOf(set.unreadable()), set.unreadable()};
}

bool isGood(const RecoveryCounts& counts, const ScanTotals& totals)
{
    return counts.unproven + counts.partial + counts.lost + counts.failed + totals.unclaimed + totals.unreadable == 0;
}

void addLost(const OldLists& lists, RecoveryReport& report)
{
    for (const OldEntry& entry : lists.entries()) {
        if (!entry.isFound)
            report.addLost(entry);
    }
    if (!lists.entries().empty() && std::ranges::none_of(lists.entries(), &OldEntry::isFound))
        std::cerr << "quillbox-set: no entry of a list agrees with the file; the list may belong to another one\n";
}

int search(const SalvageOptions& options, const Work& work, const OpenFile& data, OldLists& lists)
{
    const Wanted wanted = !work.newMount     ? Wanted::Nothing
                          : options.unproven ? Wanted::CompleteAndUnproven
                                             : Wanted::Complete;
    RecoveryReport report(options.file, options.folder, options.json);
    RecoveredItems items(data, **work.mount, lists, wanted, report);
    const bool isSealed = sealProvesData(work.files, **work.mount);
    const ScanTotals totals = scanStreams(data, isSealed ? Proving::NotNeeded : Proving::Wanted, items);
    addLost(lists, report);
    const NewSetResult set = work.newMount ? writeSet(work, data, items.set()) : NewSetResult{};
    const bool setFailed = work.newMount && (set.path.empty() || !set.unreadable.empty());
    std::string fault = report.finish(totals, set);
    if (fault.empty() && !FlushChangedVolumes())
        fault = "what was written may be missing from the disk: " + errorText(GetLastError());
    if (!fault.empty())
        std::cerr << "quillbox-set: " << fault << "\n";
    return fault.empty() && !setFailed && isGood(report.counts(), totals) ? exitGood : exitFaults;
}

}  // namespace

int salvage(const SalvageOptions& options)
{
    const std::optional<SetFiles> files = findData(options.file);
    std::error_code ignored;
    if (!files)
        return reportTrouble((fs::exists(options.file, ignored) ? "this isn't a file: " : "there is no such file: ") +
                             onScreen(std::string_view(options.file)));
    if (isListFile(files->dataName))
        return reportTrouble("this is a list file; name the data file (.QDT), and this one with --list");
    const TargetFolder folder(options.folder);
    Work work{*files, {}, nullptr, nullptr, u""};
    std::string trouble = folder.trouble();
    if (trouble.empty()) {
        work.mount = std::make_unique<SetMount>(*files, options.folder);
        trouble = *work.mount ? prepareSet(options, work) : "a folder can't be opened";
    }
    if (!trouble.empty())
        return reportTrouble(trouble);
    const OpenFile data((**work.mount).dataPath, GENERIC_READ, OPEN_EXISTING);
    if (!data.isOpen())
        return reportTrouble("the file can't be opened: " + onScreen(std::string_view(options.file)));
    OldLists lists(data);
    trouble = readLists(options, lists, work);
    return trouble.empty() ? search(options, work, data, lists) : reportTrouble(trouble);
}

}  // namespace quillbox_set
