#include "mounts.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform::file {

namespace {

struct Mounts {
    std::shared_ptr<MountedFolder> root;
    std::vector<std::shared_ptr<MountedFolder>> inRoot;
};

Mounts& mounts()
{
    static Mounts only;
    return only;
}

}  // namespace

std::shared_ptr<MountedFolder> rootMount()
{
    return mounts().root;
}

std::shared_ptr<MountedFolder> findMount(std::u16string_view name)
{
    const auto found = std::ranges::find(mounts().inRoot, name, &MountedFolder::name);
    return found == mounts().inRoot.end() ? nullptr : *found;
}

std::shared_ptr<MountedFolder> mountAt(std::size_t index)
{
    return index < mounts().inRoot.size() ? mounts().inRoot[index] : nullptr;
}

bool hiddenByMount(std::string_view hostName)
{
    return std::ranges::any_of(mounts().inRoot, [&](const auto& mount) { return mount->hostName() == hostName; });
}

void insertMount(std::shared_ptr<MountedFolder> added)
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
