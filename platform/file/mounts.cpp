#include "mounts.h"

#include "host/error.h"
#include "kernel/mutex.h"
#include "text/host_name.h"

#include "ce/error.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <utility>

namespace platform::file {

namespace {

using Clock = std::chrono::steady_clock;
using kernel::MutexLock;

// A folder that stays.
struct Permanent {
    std::unique_ptr<MountedFolder> folder;
    std::atomic<Permanent*> next = nullptr;
};

// A removable folder is open only while it is used, because an open descriptor would keep the host from unmounting it.
struct RemovableEntry {
    Removable folder;
    std::string hostName;
    FileKey identity;
    bool removed = false;  // the name stays known, so that its paths don't lead to the root folder
    Clock::time_point used = {};
    std::shared_ptr<MountedFolder> opened = nullptr;  // null if it isn't in use

    bool isUnused(std::chrono::milliseconds time) const { return opened && Clock::now() - used >= time; }
};

struct Mounts {
    // The list only grows, at its end, so reading it takes no lock.
    std::atomic<Permanent*> first = nullptr;
    std::atomic<bool> haveRemovable = false;  // since the last forgetMounts

    kernel::Mutex mutex;
    std::vector<std::unique_ptr<Permanent>> permanent GUARDED_BY(mutex);  // those of the list, in its order
    std::vector<RemovableEntry> removable GUARDED_BY(mutex);
    std::vector<std::shared_ptr<MountedFolder>> removed GUARDED_BY(mutex);

    RemovableEntry* find(std::u16string_view name) REQUIRES(mutex)
    {
        const auto found = std::ranges::find(
            removable, name, [](const RemovableEntry& each) -> const auto& { return each.folder.name; });
        return found == removable.end() ? nullptr : &*found;
    }
};

Mounts& mounts()
{
    static Mounts only;
    return only;
}

// A reference that counts nothing.
std::shared_ptr<MountedFolder> uncounted(MountedFolder* folder)
{
    return {std::shared_ptr<void>(), folder};
}

template <class Matches>
MountedFolder* findPermanent(const Matches& matches)
{
    for (const Permanent* each = mounts().first; each; each = each->next) {
        if (matches(*each->folder))
            return each->folder.get();
    }
    return nullptr;
}

MountedFolder* findPermanentNamed(std::u16string_view name)
{
    return findPermanent([&](const MountedFolder& folder) { return folder.name() == name; });
}

FoundMount openRemovable(RemovableEntry& entry)
{
    entry.used = Clock::now();
    if (entry.removed)
        return {nullptr, ERROR_NOT_READY};
    if (entry.opened)
        return {entry.opened, 0};
    Descriptor folder(entry.folder.open());
    if (!folder)
        return {nullptr, folder.get() == -ENOENT ? ERROR_NOT_READY : host::platformError(folder.get())};
    auto volume = Volume::of(folder.get());
    HostStatus status = {};
    if (!volume || readStatus(folder.get(), "", status) != 0 || keyOf(status) != entry.identity)
        return {nullptr, ERROR_NOT_READY};
    entry.opened = std::make_shared<MountedFolder>(entry.folder.name, std::move(folder), std::move(volume), true,
                                                   std::nullopt, 0, entry.folder.place);
    return {entry.opened, 0};
}

}  // namespace

std::shared_ptr<MountedFolder> rootMount()
{
    return uncounted(findPermanentNamed(u""));
}

FoundMount findMount(std::u16string_view name)
{
    if (name.empty())
        return {};
    if (MountedFolder* const folder = findPermanentNamed(name))
        return {uncounted(folder), 0};
    if (!mounts().haveRemovable)
        return {};
    const MutexLock lock(mounts().mutex);
    RemovableEntry* const entry = mounts().find(name);
    return entry ? openRemovable(*entry) : FoundMount{};
}

std::vector<std::u16string> mountNames()
{
    const MutexLock lock(mounts().mutex);
    std::vector<std::u16string> names;
    for (const auto& each : mounts().permanent) {
        if (!each->folder->name().empty())
            names.push_back(each->folder->name());
    }
    for (const RemovableEntry& entry : mounts().removable) {
        if (!entry.removed)
            names.push_back(entry.folder.name);
    }
    return names;
}

std::vector<std::shared_ptr<MountedFolder>> mountsToFlush()
{
    const MutexLock lock(mounts().mutex);
    std::vector<std::shared_ptr<MountedFolder>> all = std::exchange(mounts().removed, {});
    // One that is still in use can get changes noted later.
    std::ranges::copy_if(all, std::back_inserter(mounts().removed),
                         [](const auto& folder) { return folder.use_count() > 1; });
    for (const auto& each : mounts().permanent)
        all.push_back(uncounted(each->folder.get()));
    for (const RemovableEntry& entry : mounts().removable) {
        if (entry.opened)
            all.push_back(entry.opened);
    }
    return all;
}

bool hiddenByMount(std::string_view hostName)
{
    if (findPermanent([&](const MountedFolder& folder) { return folder.hostName() == hostName; }))
        return true;
    if (!mounts().haveRemovable)
        return false;
    const MutexLock lock(mounts().mutex);
    return std::ranges::any_of(mounts().removable,
                               [&](const RemovableEntry& entry) { return entry.hostName == hostName; });
}

void insertMount(std::unique_ptr<MountedFolder> added)
{
    const MutexLock lock(mounts().mutex);
    auto& all = mounts().permanent;
    std::atomic<Permanent*>& end = all.empty() ? mounts().first : all.back()->next;
    all.push_back(std::make_unique<Permanent>(std::move(added)));
    end = all.back().get();
}

bool insertRemovable(Removable added, const FileKey& identity)
{
    const MutexLock lock(mounts().mutex);
    const RemovableEntry* const known = mounts().find(added.name);
    const auto hostName = text::toHostName(added.name);
    if ((known && !known->removed) || findPermanentNamed(added.name) || !hostName)
        return false;
    std::erase_if(mounts().removable, [&](const RemovableEntry& entry) { return entry.folder.name == added.name; });
    mounts().removable.push_back({.folder = std::move(added), .hostName = *hostName, .identity = identity});
    mounts().haveRemovable = true;
    return true;
}

bool removeRemovable(std::u16string_view name)
{
    const MutexLock lock(mounts().mutex);
    RemovableEntry* const entry = mounts().find(name);
    if (!entry || entry->removed)
        return false;
    entry->removed = true;
    if (entry->opened) {
        entry->opened->setGone();
        mounts().removed.push_back(std::exchange(entry->opened, nullptr));
    }
    return true;
}

void closeUnused(std::chrono::milliseconds time)
{
    const MutexLock lock(mounts().mutex);
    for (RemovableEntry& entry : mounts().removable) {
        // All other references come from this one, under the mutex. So if there is none, none appears.
        if (entry.isUnused(time) && entry.opened.use_count() == 1 && entry.opened->changedVolumes().empty())
            entry.opened.reset();
    }
}

void forgetMounts()
{
    const MutexLock lock(mounts().mutex);
    mounts().first = nullptr;
    mounts().haveRemovable = false;
    mounts().permanent.clear();
    mounts().removable.clear();
    mounts().removed.clear();
}

}  // namespace platform::file
