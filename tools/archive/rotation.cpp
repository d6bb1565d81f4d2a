#include "archive/rotation.h"

#include "archive/opened_set.h"
#include "archive/set_check.h"
#include "archive/set_search.h"

#include "host/files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace archive {

namespace {

namespace fs = std::filesystem;

std::string faultOf(const SetFiles& files)
{
    const OpenedSet set(files);
    return set.isOpen() ? firstFaultOf(set) : set.trouble();
}

// Deletes the file if it exists. Returns the reason of a failure, or an empty text.
std::string deleteFile(const fs::path& path)
{
    return ::unlink(path.c_str()) == 0 || errno == ENOENT
               ? ""
               : path.filename().string() + ": " + std::generic_category().message(errno);
}

void applyRules(std::vector<JudgedSet>& newestFirst, const KeepRules& rules)
{
    std::vector<SetDate> sound;
    for (const JudgedSet& set : newestFirst) {
        if (set.isSound)
            sound.push_back(set.date);
    }
    const std::vector<std::string> kept = keptBecause(sound, rules);
    std::size_t next = 0;
    for (JudgedSet& set : newestFirst) {
        if (!set.isSound)
            continue;
        set.reason = next == 0 && kept[0].empty() ? "the newest" : kept[next];
        next++;
    }
}

}  // namespace

std::vector<JudgedSet> judgeSets(const std::vector<SetFiles>& sets, const KeepRules& rules, Progress& progress)
{
    SetDates dates(sets);
    std::vector<std::size_t> order = byDate(dates, sets.size());
    std::ranges::reverse(order);
    std::vector<JudgedSet> judged;
    for (const std::size_t at : order) {
        progress.begin(pathOf(sets[at]));
        const std::string fault = faultOf(sets[at]);
        judged.push_back({sets[at], dates.of(at), fault.empty(), fault.empty() ? "" : "damaged: " + fault});
    }
    applyRules(judged, rules);
    return judged;
}

// Deletes the list file first. The other files are deleted only after this deletion is on the disk. If the process is
// killed before it deletes them, a data file without a list file remains. A data file alone isn't a set, so the next
// backup can use its number and replace the file.
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

}  // namespace archive
