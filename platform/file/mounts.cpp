#include "mounts.h"

#include "kernel/mutex.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace platform::file {

namespace {

using List = std::vector<MountedFolder*>;

struct Mounts {
    std::unique_ptr<MountedFolder> root;
    std::atomic<const List*> current;  // the last one in `lists`; null if there is none

    kernel::Mutex mutex;
    std::vector<std::unique_ptr<MountedFolder>> folders GUARDED_BY(mutex);
    // The current list and all earlier ones. An earlier list isn't destroyed before forgetMounts, because another
    // thread can still read it.
    std::vector<std::unique_ptr<const List>> lists GUARDED_BY(mutex);

    void publish() REQUIRES(mutex)
    {
        auto list = std::make_unique<List>();
        for (const auto& folder : folders)
            list->push_back(folder.get());
        current = list.get();
        lists.push_back(std::move(list));
    }
};

Mounts& mounts()
{
    static Mounts only;
    return only;
}

// Returns the folder that was added last under the name. Null if there is none.
MountedFolder* newest(std::u16string_view name)
{
    const List& list = mountsInRoot();
    const auto found =
        std::find_if(list.rbegin(), list.rend(), [&](const MountedFolder* mount) { return mount->name() == name; });
    return found == list.rend() ? nullptr : *found;
}

}  // namespace

MountedFolder* rootMount()
{
    return mounts().root.get();
}

FoundMount findMount(std::u16string_view name)
{
    MountedFolder* const found = newest(name);
    if (!found || !found->isRemovable())
        return {MountUse(found), 0};
    const DWORD error = found->beginUse();
    return {error == 0 ? MountUse(found) : MountUse(), error};
}

const std::vector<MountedFolder*>& mountsInRoot()
{
    static const List None;
    const List* const list = mounts().current;
    return list ? *list : None;
}

bool hiddenByMount(std::string_view hostName)
{
    return std::ranges::any_of(mountsInRoot(), [&](const auto* mount) { return mount->hostName() == hostName; });
}

bool insertMount(std::unique_ptr<MountedFolder> added)
{
    Mounts& all = mounts();
    const kernel::MutexLock lock(all.mutex);
    if (added->name().empty()) {
        all.root = std::move(added);
        return true;
    }
    if (const MountedFolder* const known = newest(added->name()); known && !known->isGone())
        return false;
    all.folders.push_back(std::move(added));
    all.publish();
    return true;
}

void forgetMounts()
{
    Mounts& all = mounts();
    const kernel::MutexLock lock(all.mutex);
    all.current = nullptr;
    all.lists.clear();
    all.folders.clear();
    all.root.reset();
}

}  // namespace platform::file
