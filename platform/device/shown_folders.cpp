#include "shown_folders.h"

#include "locks.h"
#include "refusal.h"

#include "file/name_space.h"
#include "text/host_name.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace platform::device {

namespace fs = std::filesystem;
using kernel::MutexLock;

namespace {

Descriptor openShownFolder(const fs::path& folder)
{
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::u16string nameOf(const ExtraFolder& extra)
{
    std::u16string name = text::fromUtf8(extra.name);
    if (text::toUtf8(name) != extra.name || !text::toHostName(name))
        throw Refusal("\"" + extra.name + "\" can't be the name of a folder on the device.");
    return name;
}

// Opens and locks the folder of a medium. Returns a descriptor, or a negative errno. The file layer calls this function
// when the program uses a medium that isn't open.
int openAndLockMedium(const fs::path& place)
{
    Descriptor opened = openShownFolder(place);
    if (!opened || !tryLockCard(opened))
        return -errno;
    return opened.release();
}

}  // namespace

MountPoint mountPointOf(const ExtraFolder& extra)
{
    MountPoint mountPoint{.name = nameOf(extra),
                          .folder = fs::absolute(extra.folder),
                          .opened = openShownFolder(extra.folder),
                          .card = extra.card,
                          .capacity = extra.capacity};
    const std::string what = "The folder " + quoted(extra.folder) + " for \"" + extra.name + "\"";
    if (!mountPoint.opened && errno == ENOTDIR)
        throw Refusal(what + " is not a folder.");
    if (!mountPoint.opened)
        refuse(what + " can't be opened", errno);
    return mountPoint;
}

std::optional<std::string> ShownFolders::add(MountPoint mountPoint)
{
    const MutexLock lock(mutex_);
    struct stat status {};
    ::fstat(mountPoint.opened.get(), &status);
    const Shown added{mountPoint.name, mountPoint.folder, status.st_dev, status.st_ino, false, mountPoint.capacity};
    refuseDouble(added);
    auto warning = whatIsHiddenBy(mountPoint);
    if (mountPoint.card) {
        // The file layer closes the first descriptor of the folder (mountPoint.opened). The lock must last longer than
        // that descriptor, so it uses a second one.
        Descriptor& cardLock =
            cardLocks_.emplace_back(::openat(mountPoint.opened.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        lockCard(cardLock, mountPoint.folder);
    }
    if (!file::addMount({.name = std::move(mountPoint.name),
                         .folder = mountPoint.opened.release(),
                         .card = mountPoint.card,
                         .capacity = mountPoint.capacity}))
        throw Refusal("The folder " + quoted(mountPoint.folder) + " can't be shown as \"\\" + text::toUtf8(added.name) +
                      "\" on the device.");
    shown_.push_back(added);
    return warning;
}

bool ShownFolders::addMedium(const fs::path& place)
{
    const MutexLock lock(mutex_);
    struct stat status {};
    // If the device shows a folder of this file system already, the medium would show the same files under a second
    // name.
    if (::stat(place.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        std::ranges::any_of(shown_, [&](const Shown& shown) { return shown.device == status.st_dev; }))
        return false;
    Shown added{text::fromUtf8(nameFor(place)), place, status.st_dev, status.st_ino, true};
    if (!file::addRemovable({added.name, place.string(), [place] { return openAndLockMedium(place); }}))
        return false;
    shown_.push_back(std::move(added));
    return true;
}

void ShownFolders::removeMedium(const fs::path& place)
{
    const MutexLock lock(mutex_);
    const auto found =
        std::ranges::find_if(shown_, [&](const Shown& shown) { return shown.medium && shown.folder == place; });
    if (found == shown_.end())
        return;
    (void)file::removeRemovable(found->name);
    shown_.erase(found);
}

std::string ShownFolders::freeName(const fs::path& folder) const
{
    const MutexLock lock(mutex_);
    return nameFor(folder);
}

std::optional<std::u16string> ShownFolders::pathOf(const fs::path& entry) const
{
    const MutexLock lock(mutex_);
    std::error_code error;
    const fs::path whole = fs::canonical(entry, error);
    std::optional<std::u16string> best;
    std::size_t bestLength = 0;
    for (const Shown& shown : shown_) {
        const fs::path folder = fs::canonical(shown.folder, error);
        const fs::path below = whole.lexically_relative(folder);
        if (below.empty() || *below.begin() == ".." || folder.native().size() < bestLength)
            continue;
        bestLength = folder.native().size();
        best = shown.name.empty() ? u"" : u'\\' + shown.name;
        for (const fs::path& part : below)
            *best += u'\\' + text::toDeviceName(part.string());
    }
    return best;
}

std::optional<std::u16string> ShownFolders::pathOfShown(const fs::path& folder) const
{
    const MutexLock lock(mutex_);
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0)
        return std::nullopt;
    for (const Shown& shown : shown_) {
        if (shown.device == status.st_dev && shown.inode == status.st_ino)
            return shown.name.empty() ? u"" : u"\\" + shown.name;
    }
    return std::nullopt;
}

fs::path ShownFolders::hostPathOf(const std::u16string& path) const
{
    const MutexLock lock(mutex_);
    const std::size_t nameEnd = std::min(path.find(u'\\', 1), path.size());
    const Shown* const shown = path.empty() ? nullptr : find(path.substr(1, nameEnd - 1));
    fs::path found = shown ? shown->folder : device_ / "object-store";
    for (std::size_t at = shown ? nameEnd : 0; at < path.size();) {
        const std::size_t end = std::min(path.find(u'\\', at + 1), path.size());
        found /= text::toHostName(path.substr(at + 1, end - at - 1)).value_or("");
        at = end;
    }
    return found;
}

std::optional<std::uint64_t> ShownFolders::roomIn(const std::u16string& path) const
{
    const MutexLock lock(mutex_);
    const Shown* const shown = find(path.empty() ? path : path.substr(1));
    struct statvfs status {};
    if (!shown || ::statvfs(shown->folder.c_str(), &status) != 0)
        return std::nullopt;
    const std::uint64_t room = std::uint64_t{status.f_bavail} * status.f_frsize;
    const auto used = file::usedBytes(shown->name);
    if (!shown->capacity || !used)
        return room;
    return std::min(room, *shown->capacity - std::min(*used, *shown->capacity));
}

const ShownFolders::Shown* ShownFolders::find(const std::u16string& name) const
{
    const auto found = std::ranges::find(shown_, name, &Shown::name);
    return found == shown_.end() ? nullptr : &*found;
}

// If one folder had two names, the program could open one file twice, under different paths.
void ShownFolders::refuseDouble(const Shown& added) const
{
    for (const Shown& earlier : shown_) {
        if (earlier.name == added.name)
            throw Refusal("The device has two folders named \"" + text::toUtf8(added.name) +
                          "\": " + quoted(earlier.folder) + " and " + quoted(added.folder) + ".");
        if (earlier.device == added.device && earlier.inode == added.inode)
            throw Refusal("The folder " + quoted(added.folder) + " is on the device already, as \"\\" +
                          text::toUtf8(earlier.name) + "\".");
    }
}

std::string ShownFolders::nameFor(const fs::path& folder) const
{
    const fs::path last = folder.has_filename() ? folder.filename() : folder.parent_path().filename();
    const std::string base = last.empty() ? "Card" : text::toUtf8(text::toDeviceName(last.string()));
    std::string name = base;
    for (int number = 2; isTaken(text::fromUtf8(name)); ++number)
        name = base + " (" + std::to_string(number) + ")";
    return name;
}

bool ShownFolders::isTaken(const std::u16string& name) const
{
    const auto hostName = text::toHostName(name);
    std::error_code error;
    return find(name) != nullptr ||
           (hostName && fs::exists(fs::symlink_status(device_ / "object-store" / *hostName, error)));
}

// Returns a warning if the mounted folder hides a folder of the device that has the same name and isn't empty. The
// content of the hidden folder is missing in backups.
std::optional<std::string> ShownFolders::whatIsHiddenBy(const MountPoint& mountPoint) const
{
    const auto hostName = text::toHostName(mountPoint.name);
    if (mountPoint.name.empty() || !hostName)
        return std::nullopt;
    const fs::path own = device_ / "object-store" / *hostName;
    std::error_code error;
    if (!fs::exists(fs::symlink_status(own, error)) || fs::is_empty(own, error))
        return std::nullopt;
    return "\"\\" + text::toUtf8(mountPoint.name) + "\" is the folder " + quoted(mountPoint.folder) + ": " +
           quoted(own) + " is hidden and isn't backed up.";
}

}  // namespace platform::device
