#include "mounts.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform::file {

namespace {

struct Mounts {
    std::unique_ptr<MountedFolder> root;
    std::vector<std::unique_ptr<MountedFolder>> inRoot;
};

Mounts& mounts()
{
    static Mounts only;
    return only;
}

}  // namespace

MountedFolder* rootMount()
{
    return mounts().root.get();
}

MountedFolder* findMount(std::u16string_view name)
{
    const auto found = std::ranges::find(
        mounts().inRoot, name, [](const auto& mount) -> const auto& { return mount->name(); });
    return found == mounts().inRoot.end() ? nullptr : found->get();
}

MountedFolder* mountAt(std::size_t index)
{
    return index < mounts().inRoot.size() ? mounts().inRoot[index].get() : nullptr;
}

bool hiddenByMount(std::string_view hostName)
{
    return std::ranges::any_of(mounts().inRoot, [&](const auto& mount) { return mount->hostName() == hostName; });
}

void insertMount(std::unique_ptr<MountedFolder> added)
{
    if (added->name().empty())
        mounts().root = std::move(added);
    else
        mounts().inRoot.push_back(std::move(added));
}

void forgetMounts()
{
    mounts() = {};
}

}  // namespace platform::file
