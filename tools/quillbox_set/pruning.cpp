#include "pruning.h"

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_check.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "host/files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <unistd.h>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

namespace fs = std::filesystem;

// A set and what becomes of it.
struct Judged {
    const SetFiles* files;
    SetDate date;
    bool isSound;
    std::string reason;  // why it is kept; empty: it is removed
};

std::string faultOf(const SetFiles& files)
{
    const OpenedSet set(files);
    if (!set.isOpen())
        return set.trouble();
    return firstFaultOf(set);
}

// The newest set first.
std::vector<Judged> judge(const FoundSets& found, const KeepRules& rules)
{
    SetDates dates(found.sets);
    std::vector<Judged> sets;
    std::vector<std::size_t> order = byDate(dates, found.sets.size());
    std::ranges::reverse(order);
    Progress progress(order.size());
    std::vector<SetDate> sound;
    for (const std::size_t at : order) {
        const SetFiles& files = found.sets[at];
        progress.begin(pathOf(files));
        const SetDate date = dates.of(at);
        const std::string fault = faultOf(files);
        sets.push_back({&files, date, fault.empty(), fault.empty() ? "" : "damaged: " + fault});
        if (fault.empty())
            sound.push_back(date);
    }
    const std::vector<std::string> kept = keptBecause(sound, rules);
    std::size_t next = 0;
    for (Judged& set : sets) {
        if (!set.isSound)
            continue;
        set.reason = next == 0 && kept[0].empty() ? "the newest" : kept[next];
        next++;
    }
    return sets;
}

// Deletes a file that may be missing. Returns the reason of a failure.
std::string deleteFile(const fs::path& path)
{
    return ::unlink(path.c_str()) == 0 || errno == ENOENT
               ? ""
               : path.filename().string() + ": " + std::generic_category().message(errno);
}

// The list goes first, and its removal is on the disk before the rest is deleted. What is left after a kill is no set,
// and the next backup takes the number and replaces the files.
std::string removeSet(const SetFiles& files)
{
    const fs::path folder = files.folder;
    std::string failure = deleteFile(folder / files.listName);
    if (!failure.empty())
        return failure;
    if (const int error = platform::host::flushFolder(folder))
        return std::generic_category().message(error) + "; its data file is left";
    for (const std::string& name : {files.sumName, files.dataName}) {
        if (std::string fault = deleteFile(folder / name); failure.empty())
            failure = fault;
    }
    return failure;
}

void print(const Judged& set, bool removes, bool json)
{
    nlohmann::ordered_json line = {{"set", jsonText(pathOf(*set.files))}, {"date", set.date.text()}};
    line["sound"] = set.isSound;
    line["kept"] = !removes;
    if (!removes)
        line["reason"] = jsonText(set.reason);
    printResult(json, line,
                (removes ? "remove  " : "keep    ") + onScreen(pathOf(*set.files)) + "  " + set.date.textWithDoubt() +
                    (removes ? "" : "  " + set.reason));
}

}  // namespace

int pruneSets(const FoundSets& found, const KeepRules& rules, bool dryRun, bool json)
{
    int code = reportFaults(found);
    if (code != exitGood)
        return code;  // sets that couldn't be seen could be newer
    for (const Judged& set : judge(found, rules)) {
        const bool removes = set.reason.empty();
        print(set, removes, json);
        if (!set.isSound)
            code = exitFaults;
        if (!removes || dryRun)
            continue;
        checkStop();
        if (const std::string failure = removeSet(*set.files); !failure.empty()) {
            std::cerr << "quillbox-set: " << onScreen(pathOf(*set.files)) << " can't be removed: " << onScreen(failure)
                      << '\n';
            code = exitFaults;
        }
    }
    return code;
}

}  // namespace quillbox_set
