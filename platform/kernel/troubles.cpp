// troubles.cpp - see troubles.h.
#include "troubles.h"

#include "ce/error.h"

#include <algorithm>
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

struct State {
    std::mutex mutex;
    std::size_t noted = 0;
    std::map<std::pair<Trouble, Troubled>, ByName> names;
};

State& state()
{
    static State all;
    return all;
}

}  // namespace

void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    State& all = state();
    const std::lock_guard lock(all.mutex);
    const auto [known, isNew] = all.names[{kind, what}].try_emplace(std::u16string(name), Noted{all.noted++, error});
    if (!isNew && known->second.error == ERROR_PATH_NOT_FOUND)
        known->second.error = error;
}

void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    State& all = state();
    const std::lock_guard lock(all.mutex);
    ByName& names = all.names[{kind, what}];
    if (names.empty())
        return;
    if (const auto found = names.find(std::u16string(name)); found != names.end() && found->second.error == error)
        names.erase(found);
}

Troubles troublesSoFar(Trouble kind, Troubled what)
{
    State& all = state();
    const std::lock_guard lock(all.mutex);
    const ByName& names = all.names[{kind, what}];
    const auto first = std::ranges::min_element(names, {}, [](const auto& each) {
        return std::pair(each.second.error == ERROR_PATH_NOT_FOUND, each.second.order);
    });
    if (first == names.end())
        return {};
    return {names.size(), first->first, first->second.error};
}

}  // namespace platform::kernel
