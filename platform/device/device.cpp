// Opens a device: locks it, opens its registry and shows its folders.
#include "device/device.h"

#include "device/remembered_folders.h"
#include "fresh_device.h"
#include "host/descriptor.h"
#include "locks.h"
#include "media_watch.h"
#include "refusal.h"
#include "shown_folders.h"

#include "file/name_space.h"
#include "registry/registry_store.h"
#include "store/object_store.h"
#include "text/host_name.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

class OpenedDevice final : public Device {
public:
    explicit OpenedDevice(fs::path folder) : folder_(std::move(folder)), lock_(lockDevice(folder_)), shown_(folder_)
    {
        if (file::rootFolder() >= 0)
            throw Refusal("This process has another device open already.");
    }

    ~OpenedDevice() override
    {
        // The locks are members, so they are released after this function has closed everything.
        media_.reset();
        file::removeAllMounts();
        store::closeStore();
        registry::closeRegistry();
    }

    [[nodiscard]] const fs::path& folder() const override { return folder_; }
    [[nodiscard]] std::string showFolder(const fs::path& folder, bool card) override;
    [[nodiscard]] ShownSet showSet(const fs::path& listFile) override;
    [[nodiscard]] ShownStorage showStorage(const fs::path& folder) override;
    [[nodiscard]] fs::path hostPath(const std::u16string& path) const override { return shown_.hostPathOf(path); }
    [[nodiscard]] std::optional<std::uint64_t> roomIn(const std::u16string& path) const override
    {
        return shown_.roomIn(path);
    }
    void showMedia(std::vector<fs::path> folders, std::function<bool()> changed) override
    {
        media_.emplace(std::move(folders), shown_, std::move(changed));
    }

    // Returns warnings, which are sentences for the user.
    [[nodiscard]] std::vector<std::string> open(const std::vector<ExtraFolder>& extras, bool demonstration);

private:
    [[nodiscard]] std::optional<std::string> whatIsLost() const;

    fs::path folder_;
    Descriptor lock_;
    ShownFolders shown_;
    std::optional<MediaWatch> media_;
};

Descriptor openFolder(const fs::path& folder, int flags = 0)
{
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

// Creates the folder if it is missing, for example because the user or an older version of Quillbox made the device.
void makeMissingFolder(const fs::path& folder)
{
    if (::mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST)
        refuse("The folder " + quoted(folder) + " can't be made", errno);
}

// Opens a folder of the device itself. A link is refused, because it could lead out of the device.
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

// Returns the remembered folders that exist. A missing folder isn't an error, because it can be a card that isn't
// inserted. A folder of the command line (`extras`) replaces a remembered folder of the same name.
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

// Returns a warning if the database is missing or empty although the device had one before. A device that was made by
// hand has had no database, so it causes no warning.
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

std::vector<std::string> OpenedDevice::open(const std::vector<ExtraFolder>& extras, bool demonstration)
{
    // The device is locked here, so no other process can be creating it at the same time.
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
    for (MountPoint& mountPoint : mountPoints) {
        if (auto warning = shown_.add(std::move(mountPoint)))
            warnings.push_back(std::move(*warning));
    }
    const Descriptor own = openFolder(folder_);
    for (const std::u16string& name : file::setLeftTemporariesAside(own.get()))
        warnings.push_back("A run that was killed left the temporary file \"\\" + text::toUtf8(name) +
                           "\" on the device; it was moved to " + quoted(folder_ / "left-behind") + ".");
    return warnings;
}

std::string OpenedDevice::showFolder(const fs::path& folder, bool card)
{
    const ExtraFolder extra{.name = shown_.freeName(folder), .folder = folder, .card = card, .capacity = {}};
    try {
        (void)shown_.add(mountPointOf(extra));
    } catch (const Refusal& refusal) {
        return refusal.what();
    }
    return rememberFolder(extra) ? "" : "The folder " + quoted(folder) + " can't be remembered for the next start.";
}

ShownSet OpenedDevice::showSet(const fs::path& listFile)
{
    std::error_code error;
    const fs::path whole = fs::canonical(listFile, error);
    if (error || !fs::is_regular_file(whole, error))
        return {{}, quoted(listFile) + " is no file."};
    if (!whole.native().ends_with("QLT"))
        return {{}, quoted(whole) + " is no list of a set: such a file's name ends in QLT."};
    if (const auto path = shown_.pathOf(whole))
        return {*path, ""};
    const fs::path folder = whole.parent_path();
    const fs::path storage = folder.filename() == "QUILBOX" ? folder.parent_path() : folder;
    try {
        (void)shown_.add(
            mountPointOf({.name = shown_.freeName(storage), .folder = storage, .card = true, .capacity = {}}));
    } catch (const Refusal& refusal) {
        return {{}, refusal.what()};
    }
    return {shown_.pathOf(whole).value_or(u""), ""};
}

ShownStorage OpenedDevice::showStorage(const fs::path& folder)
{
    ShownStorage storage;
    try {
        if (const auto path = shown_.pathOfShown(folder)) {
            storage.path = *path;
            return storage;
        }
        std::error_code error;
        const fs::path whole = fs::weakly_canonical(folder, error);
        const std::string name = shown_.freeName(whole);
        (void)shown_.add(mountPointOf({.name = name, .folder = whole, .card = true, .capacity = {}}));
        storage.path = u"\\" + text::fromUtf8(name);
        storage.isNew = true;
    } catch (const Refusal& refusal) {
        storage.error = {refusal.what(), refusal.inUse()};
    }
    return storage;
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

std::optional<fs::path> userFolder(const char* variable, const char* usual)
{
    // The environment is read before any thread of the program starts.
    const char* named = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    const char* home = std::getenv("HOME");     // NOLINT(concurrency-mt-unsafe)
    if (named != nullptr && *named == '/')
        return fs::path(named);
    if (home != nullptr && *home == '/')
        return fs::path(home) / usual;
    return std::nullopt;
}

std::optional<fs::path> defaultDeviceFolder()
{
    const auto data = userFolder("XDG_DATA_HOME", ".local/share");
    return data ? std::optional(*data / "quillbox" / "device") : std::nullopt;
}

std::vector<fs::path> usualMediaFolders()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread calls getpwuid
    const passwd* const user = ::getpwuid(::getuid());
    if (!user || !user->pw_name || !*user->pw_name)
        return {};
    return {fs::path("/run/media") / user->pw_name, fs::path("/media") / user->pw_name};
}

}  // namespace platform::device
