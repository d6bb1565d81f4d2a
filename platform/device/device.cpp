// Opening a device: its lock, its registry, the folders of its name space.
#include "device/device.h"

#include "device/remembered_folders.h"
#include "fresh_device.h"
#include "host/descriptor.h"
#include "locks.h"
#include "refusal.h"

#include "file/name_space.h"
#include "registry/registry_store.h"
#include "store/object_store.h"
#include "text/host_name.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

// A folder of the host that is to be mounted.
struct MountPoint {
    std::u16string name;  // empty for the root
    fs::path folder;
    Descriptor opened;
    bool card = false;
    std::optional<std::uint64_t> capacity;
};

class OpenedDevice final : public Device {
public:
    explicit OpenedDevice(fs::path folder) : folder_(std::move(folder)), lock_(lockDevice(folder_))
    {
        if (file::rootFolder() >= 0)
            throw Refusal("This process has another device open already.");
    }

    ~OpenedDevice() override
    {
        // The locks are members, so they are released after this, when everything is closed.
        file::removeAllMounts();
        store::closeStore();
        registry::closeRegistry();
    }

    [[nodiscard]] const fs::path& folder() const override { return folder_; }

    // Returns warnings.
    [[nodiscard]] std::vector<std::string> open(const std::vector<ExtraFolder>& extras, bool demonstration);

private:
    void mount(MountPoint mountPoint);
    [[nodiscard]] std::optional<std::string> whatIsLost() const;
    [[nodiscard]] std::optional<std::string> whatIsHiddenBy(const MountPoint& mountPoint) const;

    fs::path folder_;
    Descriptor lock_;
    std::vector<Descriptor> cardLocks_;
};

Descriptor openFolder(const fs::path& folder, int flags = 0)
{
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

// Creates a folder that an older or hand-made device may lack.
void makeMissingFolder(const fs::path& folder)
{
    if (::mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST)
        refuse("The folder " + quoted(folder) + " can't be made", errno);
}

// Opens a folder of the device itself. A link is refused, because it would lead out of the device.
Descriptor openOwnFolder(const fs::path& folder)
{
    Descriptor opened = openFolder(folder, O_NOFOLLOW);
    if (!opened && (errno == ENOTDIR || errno == ELOOP))
        throw Refusal(quoted(folder) + " must be a folder.");
    if (!opened)
        refuse("The folder " + quoted(folder) + " can't be opened", errno);
    return opened;
}

std::vector<MountPoint> cardsIn(const fs::path& cards)
{
    std::error_code error;
    std::vector<MountPoint> mountPoints;
    for (fs::directory_iterator entry(cards, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->symlink_status().type() != fs::file_type::directory)
            continue;
        MountPoint& mountPoint = mountPoints.emplace_back();
        mountPoint.name = text::toDeviceName(entry->path().filename().string());
        mountPoint.folder = entry->path();
        mountPoint.opened = openOwnFolder(entry->path());
        mountPoint.card = true;
    }
    if (error)
        refuse("The folder " + quoted(cards) + " can't be read", error.value());
    std::sort(mountPoints.begin(), mountPoints.end(),
              [](const MountPoint& left, const MountPoint& right) { return left.name < right.name; });
    return mountPoints;
}

std::u16string nameOf(const ExtraFolder& extra)
{
    std::u16string name = text::fromUtf8(extra.name);
    if (text::toUtf8(name) != extra.name || !text::toHostName(name))
        throw Refusal("\"" + extra.name + "\" can't be the name of a folder on the device.");
    return name;
}

MountPoint mountPointOf(const ExtraFolder& extra)
{
    MountPoint mountPoint{.name = nameOf(extra),
                          .folder = fs::absolute(extra.folder),
                          .opened = openFolder(extra.folder),
                          .card = extra.card,
                          .capacity = extra.capacity};
    const std::string what = "The folder " + quoted(extra.folder) + " for \"" + extra.name + "\"";
    if (!mountPoint.opened && errno == ENOTDIR)
        throw Refusal(what + " is not a folder.");
    if (!mountPoint.opened)
        refuse(what + " can't be opened", errno);
    return mountPoint;
}

// The remembered folders that exist: a card that isn't inserted is no failure. A folder of the command line replaces a
// remembered one of the same name.
std::vector<MountPoint> rememberedMountPoints(const std::vector<ExtraFolder>& extras)
{
    std::vector<MountPoint> mountPoints;
    for (const ExtraFolder& folder : rememberedFolders()) {
        const bool named = std::any_of(extras.begin(), extras.end(),
                                       [&](const ExtraFolder& extra) { return extra.name == folder.name; });
        std::error_code ignored;
        if (!named && fs::is_directory(folder.folder, ignored))
            mountPoints.push_back(mountPointOf(folder));
    }
    return mountPoints;
}

// Refuses two folders of one name and two names of one folder. With two names, one file could be open twice.
void refuseDoubles(const std::vector<MountPoint>& mountPoints)
{
    for (auto mountPoint = mountPoints.begin(); mountPoint != mountPoints.end(); ++mountPoint) {
        struct stat status {};
        ::fstat(mountPoint->opened.get(), &status);
        for (auto earlier = mountPoints.begin(); earlier != mountPoint; ++earlier) {
            if (earlier->name == mountPoint->name)
                throw Refusal("The device has two folders named \"" + text::toUtf8(mountPoint->name) +
                              "\": " + quoted(earlier->folder) + " and " + quoted(mountPoint->folder) + ".");
            struct stat other {};
            ::fstat(earlier->opened.get(), &other);
            if (status.st_dev == other.st_dev && status.st_ino == other.st_ino)
                throw Refusal("The folder " + quoted(mountPoint->folder) + " is on the device already, as \"\\" +
                              text::toUtf8(earlier->name) + "\".");
        }
    }
}

// Warns of a missing database only if the device had one before. A device made by hand needs none.
std::optional<std::string> OpenedDevice::whatIsLost() const
{
    std::error_code error;
    const fs::path database = folder_ / "device.db";
    const bool there = fs::exists(database, error);
    const bool holdsSomething = there && fs::file_size(database, error) > 0;
    if (holdsSomething || !hadDatabase(lock_))
        return std::nullopt;
    return quoted(database) + (there ? " is empty" : " is missing") +
           ": the device starts without databases and with an empty registry.";
}

// A mounted folder hides the device's own folder of that name, whose content is then missing in backups.
std::optional<std::string> OpenedDevice::whatIsHiddenBy(const MountPoint& mountPoint) const
{
    const auto hostName = text::toHostName(mountPoint.name);
    if (mountPoint.name.empty() || !hostName)
        return std::nullopt;
    const fs::path own = folder_ / "object-store" / *hostName;
    std::error_code error;
    if (!fs::exists(fs::symlink_status(own, error)) || fs::is_empty(own, error))
        return std::nullopt;
    return "\"\\" + text::toUtf8(mountPoint.name) + "\" is the folder " + quoted(mountPoint.folder) + ": " +
           quoted(own) + " is hidden and isn't backed up.";
}

std::vector<std::string> OpenedDevice::open(const std::vector<ExtraFolder>& extras, bool demonstration)
{
    // Check this under the lock, which ensures that no other process is creating the device.
    if (kindOf(folder_) == FolderKind::Device)
        clearLeftovers(folder_);
    else
        makeDevice(folder_, demonstration);
    std::vector<std::string> warnings;
    if (auto warning = whatIsLost())
        warnings.push_back(std::move(*warning));
    makeMissingFolder(folder_ / "cards");

    std::vector<MountPoint> mountPoints;
    mountPoints.push_back({.name = {},
                           .folder = folder_ / "object-store",
                           .opened = openOwnFolder(folder_ / "object-store"),
                           .card = false,
                           .capacity = {}});
    (void)openOwnFolder(folder_ / "cards");
    std::ranges::move(cardsIn(folder_ / "cards"), std::back_inserter(mountPoints));
    std::string sentence;
    if (!registry::openRegistry(folder_ / "device.db", sentence))
        throw Refusal(sentence);
    if (!sentence.empty())
        warnings.push_back(sentence);
    noteDatabase(lock_);
    std::ranges::move(rememberedMountPoints(extras), std::back_inserter(mountPoints));
    for (const ExtraFolder& extra : extras)
        mountPoints.push_back(mountPointOf(extra));
    refuseDoubles(mountPoints);
    for (MountPoint& mountPoint : mountPoints) {
        if (auto warning = whatIsHiddenBy(mountPoint))
            warnings.push_back(std::move(*warning));
        mount(std::move(mountPoint));
    }
    const Descriptor own = openFolder(folder_);
    for (const std::u16string& name : file::setLeftTemporariesAside(own.get()))
        warnings.push_back("A run that was killed left the temporary file \"\\" + text::toUtf8(name) +
                           "\" on the device; it was moved to " + quoted(folder_ / "left-behind") + ".");
    return warnings;
}

void OpenedDevice::mount(MountPoint mountPoint)
{
    if (mountPoint.card) {
        // Open the folder again, since the name space closes the other descriptor before the lock may be released.
        Descriptor& lock =
            cardLocks_.emplace_back(::openat(mountPoint.opened.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        lockCard(lock, mountPoint.folder);
    }
    const std::string name = text::toUtf8(mountPoint.name);
    if (!file::addMount({.name = std::move(mountPoint.name),
                         .folder = mountPoint.opened.release(),
                         .card = mountPoint.card,
                         .capacity = mountPoint.capacity}))
        throw Refusal("The folder " + quoted(mountPoint.folder) + " can't be shown as \"\\" + name +
                      "\" on the device.");
}

}  // namespace

OpenResult openDevice(const fs::path& folder, const std::vector<ExtraFolder>& extras, bool demonstration)
{
    OpenResult result;
    try {
        file::prepareProcess();
        const fs::path absolute = fs::absolute(folder).lexically_normal();
        const FolderKind kind = kindOf(absolute);
        if (kind == FolderKind::Other)
            throw Refusal("The folder " + quoted(absolute) +
                          " holds other files and no \"object-store\", so it is not a device.");
        std::error_code error;
        if (kind == FolderKind::Missing && !fs::create_directories(absolute, error) && error)
            refuse("The folder " + quoted(absolute) + " can't be made", error.value());
        auto device = std::make_unique<OpenedDevice>(absolute);
        result.warnings = device->open(extras, demonstration);
        result.device = std::move(device);
    } catch (const Refusal& refusal) {
        result.error = {refusal.what(), refusal.inUse()};
    } catch (const fs::filesystem_error& failure) {
        result.error = {std::string("The device can't be opened: ") + failure.what() + ".", false};
    }
    return result;
}

std::optional<fs::path> defaultDeviceFolder()
{
    // The environment is read before any thread of the program starts.
    const char* data = std::getenv("XDG_DATA_HOME");  // NOLINT(concurrency-mt-unsafe)
    const char* home = std::getenv("HOME");           // NOLINT(concurrency-mt-unsafe)
    const fs::path device = fs::path("quillbox") / "device";
    if (data != nullptr && *data == '/')
        return fs::path(data) / device;
    if (home != nullptr && *home == '/')
        return fs::path(home) / ".local/share" / device;
    return std::nullopt;
}

}  // namespace platform::device
