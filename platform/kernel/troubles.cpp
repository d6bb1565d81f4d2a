#include "kernel/troubles.h"

#include "kernel/job.h"

#include "ce/error.h"
#include "ce/outcome.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace platform::kernel {

namespace {

struct Noted {
    std::size_t order;
    DWORD error;
};

using ByName = std::unordered_map<std::u16string, Noted>;

struct NotedTroubles {
    std::mutex mutex;
    std::size_t noted = 0;
    bool searches = false;     // set by SearchForChoices: a missing permission to read isn't noted
    std::size_t jobStart = 0;  // the lowest `order` of a trouble of the present job
    std::map<std::pair<Trouble, Troubled>, ByName> names;
    std::function<void(HWND)> jobEnds;
};

NotedTroubles& notedTroubles()
{
    static NotedTroubles all;
    return all;
}

bool saysLittle(DWORD error)
{
    return error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    if (all.searches && kind == Trouble::Reading && error == ERROR_ACCESS_DENIED)
        return;
    const Noted noted{all.noted++, error};
    const auto [known, isNew] = all.names[{kind, what}].try_emplace(std::u16string(name), noted);
    if (isNew)
        return;
    // An earlier job recorded this failure already. Now the failure belongs to the current job, with the new error.
    if (known->second.order < all.jobStart)
        known->second = noted;
    else if (saysLittle(known->second.error))
        known->second.error = error;
}

void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    ByName& names = all.names[{kind, what}];
    if (names.empty())
        return;
    if (const auto found = names.find(std::u16string(name)); found != names.end() && found->second.error == error)
        names.erase(found);
}

std::vector<NamedTrouble> troublesOf(Trouble kind, Troubled what, Since since)
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    const std::size_t from = since == Since::Job ? all.jobStart : 0;
    std::vector<std::pair<std::size_t, NamedTrouble>> found;
    for (const auto& [name, noted] : all.names[{kind, what}]) {
        if (noted.order >= from)
            found.push_back({noted.order, {name, noted.error}});
    }
    std::ranges::sort(found, {}, [](const auto& each) { return std::pair(saysLittle(each.second.error), each.first); });
    std::vector<NamedTrouble> troubles;
    troubles.reserve(found.size());
    for (auto& [order, trouble] : found)
        troubles.push_back(std::move(trouble));
    return troubles;
}

void setJobEndHandler(std::function<void(HWND owner)> handler)
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    all.jobEnds = std::move(handler);
}

}  // namespace platform::kernel

using namespace platform::kernel;

void ReportItem(DWORD outcome, DWORD kind, const WCHAR* name, DWORD error)
{
    constexpr std::array Outcomes = {Trouble::Storing, Trouble::Restoring, Trouble::Deleting, Trouble::Replacing,
                                     Trouble::Reaching};
    constexpr std::array Kinds = {Troubled::File, Troubled::Database, Troubled::Registry};
    if (outcome < OutcomeNotStored || outcome > Outcomes.size() || kind < OutcomeFile || kind > Kinds.size())
        return;
    const Troubled what = Kinds[kind - 1];
    noteTrouble(Outcomes[outcome - 1], what, what == Troubled::Registry ? u"" : name, error);
}

void ReportNoSet(const WCHAR* folder, DWORD error)
{
    noteTrouble(Trouble::Numbering, Troubled::File, folder, error);
}

void SearchForChoices(BOOL on)
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    all.searches = on != FALSE;
}

void BeginJob()
{
    NotedTroubles& all = notedTroubles();
    const std::lock_guard lock(all.mutex);
    all.jobStart = all.noted;
    noteJobBegin();
}

void EndJob(HWND owner)
{
    noteJobEnd();
    std::function<void(HWND)> handler;
    {
        NotedTroubles& all = notedTroubles();
        const std::lock_guard lock(all.mutex);
        handler = all.jobEnds;
    }
    if (handler)
        handler(owner);
}
