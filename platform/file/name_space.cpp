// name_space.cpp - the list of mounted folders.
#include "file/name_space.h"

#include "attributes.h"
#include "folder_reader.h"
#include "folder_search.h"
#include "kernel/handle_table.h"
#include "mounted_folder.h"
#include "open_file.h"
#include "open_files.h"
#include "text/host_name.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <set>
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

using Inode = std::pair<std::uint64_t, std::uint64_t>;

// Bytes of the files below; a file of several names counts once. What can't be read counts nothing.
std::uint64_t measure(Descriptor folder, std::set<Inode>& counted)
{
    std::uint64_t bytes = 0;
    FolderReader reader(std::move(folder));
    while (const auto name = reader.next()) {
        HostStatus status = {};
        if (readStatus(reader.folder(), name->data(), status) != 0)
            continue;
        const Inode inode{(std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor, status.stx_ino};
        if (S_ISDIR(status.stx_mode)) {
            Descriptor below(openBelow(reader.folder(), name->data(), O_RDONLY | O_DIRECTORY));
            if (below)
                bytes += measure(std::move(below), counted);
        } else if (S_ISREG(status.stx_mode) && (status.stx_nlink == 1 || counted.insert(inode).second)) {
            bytes += status.stx_size;
        }
    }
    return bytes;
}

std::uint64_t measure(int folder)
{
    std::set<Inode> counted;
    Descriptor readable(openBelow(folder, ".", O_RDONLY | O_DIRECTORY));
    return readable ? measure(std::move(readable), counted) : 0;
}

}  // namespace

void prepareProcess()
{
    // A lease that another process breaks in the moment that we hold it is told by SIGIO, which ends a process that has
    // said nothing about it.
    struct sigaction action = {};
    if (::sigaction(SIGIO, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
        action.sa_handler = SIG_IGN;
        (void)::sigaction(SIGIO, &action, nullptr);
    }
    ::umask(::umask(0) & ~static_cast<mode_t>(S_IRWXU));
}

bool addMount(Mount mount)
{
    Descriptor folder(mount.folder);
    const bool isRoot = mount.name.empty();
    if (isRoot ? mounts().root != nullptr : findMount(mount.name) || !text::toHostName(mount.name))
        return false;
    auto volume = std::make_unique<Volume>();
    volume->readable = Descriptor(openBelow(folder.get(), ".", O_RDONLY | O_DIRECTORY));
    HostStatus status = {};
    if (!volume->readable || readStatus(volume->readable.get(), "", status) != 0)
        return false;
    volume->device = deviceOf(status);
    prepareProcess();
    const std::uint64_t used = mount.capacity ? measure(folder.get()) : 0;
    auto added = std::make_shared<MountedFolder>(std::move(mount.name), std::move(folder), std::move(volume),
                                                 mount.card, mount.capacity, used);
    if (isRoot)
        mounts().root = std::move(added);
    else
        mounts().inRoot.push_back(std::move(added));
    return true;
}

void removeAllMounts()
{
    kernel::removeHandlesIf([](const kernel::Object& object) {
        return typeid(object) == typeid(OpenFile) || typeid(object) == typeid(FolderSearch);
    });
    OpenFiles::instance()->forgetTemporary();
    mounts() = {};
}

std::optional<std::uint64_t> usedBytes(const std::u16string& mountName)
{
    const auto mount = mountName.empty() ? rootMount() : findMount(mountName);
    return mount && mount->hasCapacity() ? std::optional(mount->used()) : std::nullopt;
}

int rootFolder()
{
    return mounts().root ? mounts().root->folder() : -1;
}

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

}  // namespace platform::file
