#include "file/name_space.h"

#include "attributes.h"
#include "folder_reader.h"
#include "folder_search.h"
#include "kernel/handle_table.h"
#include "mounts.h"
#include "open_file.h"
#include "open_files.h"
#include "temporary_files.h"
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

// Returns the total length of all files below the folder. The length of a file with several names is added only once.
// Files and folders that can't be read are left out.
std::uint64_t measure(Descriptor folder, std::set<FileKey>& counted)
{
    std::uint64_t bytes = 0;
    FolderReader reader(std::move(folder));
    while (const auto name = reader.next()) {
        HostStatus status = {};
        if (readStatus(reader.folder(), name->data(), status) != 0)
            continue;
        if (isFolder(status)) {
            Descriptor below(openBelow(reader.folder(), name->data(), O_RDONLY | O_DIRECTORY));
            if (below)
                bytes += measure(std::move(below), counted);
        } else if (isFile(status) && (status.stx_nlink == 1 || counted.insert(keyOf(status)).second)) {
            bytes += status.stx_size;
        }
    }
    return bytes;
}

std::uint64_t measure(int folder)
{
    std::set<FileKey> counted;
    Descriptor readable(openBelow(folder, ".", O_RDONLY | O_DIRECTORY));
    return readable ? measure(std::move(readable), counted) : 0;
}

struct MarkedFiles {
    std::vector<std::string> names;
    bool areAll = true;  // the whole folder was read, and the host has reported for each file whether it has the mark
};

MarkedFiles markedFilesIn(FolderReader& reader)
{
    MarkedFiles found;
    while (const auto name = reader.next()) {
        const std::optional<bool> isMarked = isMarkedTemporary(reader.folder(), name->data());
        if (isMarked.value_or(false))
            found.names.emplace_back(*name);
        found.areAll = found.areAll && isMarked;
    }
    found.areAll = found.areAll && reader.error() == 0;
    return found;
}

}  // namespace

void prepareProcess()
{
    // When another process breaks a lease of this process, the host sends SIGIO to this process. By default, this
    // signal ends a process.
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
    if (isRoot ? rootMount() != nullptr : !text::toHostName(mount.name))
        return false;
    auto volume = Volume::of(folder.get());
    if (!volume)
        return false;
    prepareProcess();
    const std::uint64_t used = mount.capacity ? measure(folder.get()) : 0;
    auto added = std::make_unique<MountedFolder>(std::move(mount.name), std::move(folder), std::move(volume),
                                                 mount.card, mount.capacity, used);
    return insertMount(std::move(added));
}

bool addRemovable(Removable removable)
{
    HostStatus status = {};
    if (!text::toHostName(removable.name) || readStatus(AT_FDCWD, removable.place.c_str(), status) != 0 ||
        !isFolder(status))
        return false;
    return insertMount(std::make_unique<MountedFolder>(std::move(removable), keyOf(status)));
}

bool removeRemovable(const std::u16string& name)
{
    const auto& all = mountsInRoot();
    const auto found = std::find_if(all.rbegin(), all.rend(), [&](const MountedFolder* mount) {
        return mount->isRemovable() && mount->name() == name;
    });
    if (found == all.rend())
        return false;
    (*found)->setGone();
    (*found)->closeIfUnused({});
    return true;
}

void closeUnusedFolders(std::chrono::milliseconds time)
{
    for (MountedFolder* const mount : mountsInRoot())
        mount->closeIfUnused(time);
}

void removeAllMounts()
{
    kernel::removeHandlesIf([](const kernel::Object& object) {
        return typeid(object) == typeid(OpenFile) || typeid(object) == typeid(FolderSearch);
    });
    {
        OpenFiles& table = OpenFiles::instance();
        const kernel::MutexLock lock(table.mutex());
        table.temporaries().withdrawAll();
    }
    forgetMounts();
}

std::optional<std::uint64_t> usedBytes(const std::u16string& mountName)
{
    const MountUse mount = mountName.empty() ? MountUse(rootMount()) : findMount(mountName).folder;
    return mount && mount->hasCapacity() ? std::optional(mount->used()) : std::nullopt;
}

std::vector<std::u16string> setLeftTemporariesAside(int deviceFolder)
{
    constexpr const char* Aside = "left-behind";
    std::vector<std::u16string> moved;
    if (!mayHoldMarkedFiles(rootFolder()))
        return moved;
    FolderReader reader(Descriptor(openBelow(rootFolder(), ".", O_RDONLY | O_DIRECTORY)));
    const MarkedFiles found = markedFilesIn(reader);
    if (!found.names.empty())
        (void)makeFolder(deviceFolder, Aside);  // -EEXIST does no harm; after any other error the opening below fails
    const Descriptor aside(openBelow(deviceFolder, Aside, O_RDONLY | O_DIRECTORY));
    for (const std::string& name : found.names) {
        if (moveFile(reader.folder(), name.c_str(), aside.get(), name.c_str(), true) == 0)
            moved.push_back(text::toDeviceName(name));
    }
    if (found.areAll && moved.size() == found.names.size())
        removeMark(rootFolder());
    return moved;
}

int rootFolder()
{
    const MountedFolder* const root = rootMount();
    return root ? root->folder() : -1;
}

}  // namespace platform::file
