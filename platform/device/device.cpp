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
struct Place {
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
    void mount(Place place);
    [[nodiscard]] std::optional<std::string> whatIsLost() const;
    [[nodiscard]] std::optional<std::string> whatIsHiddenBy(const Place& place) const;

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

std::vector<Place> cardsIn(const fs::path& cards)
{
    std::error_code error;
    std::vector<Place> places;
    for (fs::directory_iterator entry(cards, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->symlink_status().type() != fs::file_type::directory)
            continue;
        Place& place = places.emplace_back();
        place.name = text::toDeviceName(entry->path().filename().string());
        place.folder = entry->path();
        place.opened = openOwnFolder(entry->path());
        place.card = true;
    }
    if (error)
        refuse("The folder " + quoted(cards) + " can't be read", error.value());
    std::sort(places.begin(), places.end(),
              [](const Place& left, const Place& right) { return left.name < right.name; });
    return places;
}

std::u16string nameOf(const ExtraFolder& extra)
{
    std::u16string name = text::fromUtf8(extra.name);
    if (text::toUtf8(name) != extra.name || !text::toHostName(name))
        throw Refusal("\"" + extra.name + "\" can't be the name of a folder on the device.");
    return name;
}

Place placeOf(const ExtraFolder& extra)
{
    Place place{.name = nameOf(extra),
                .folder = fs::absolute(extra.folder),
                .opened = openFolder(extra.folder),
                .card = extra.card,
                .capacity = extra.capacity};
    const std::string what = "The folder " + quoted(extra.folder) + " for \"" + extra.name + "\"";
    if (!place.opened && errno == ENOTDIR)
        throw Refusal(what + " is not a folder.");
    if (!place.opened)
        refuse(what + " can't be opened", errno);
    return place;
}

// The remembered folders that exist: a card that isn't inserted is no failure. A folder of the command line replaces a
// remembered one of the same name.
std::vector<Place> rememberedPlaces(const std::vector<ExtraFolder>& extras)
{
    std::vector<Place> places;
    for (const ExtraFolder& folder : rememberedFolders()) {
        const bool named = std::any_of(extras.begin(), extras.end(),
                                       [&](const ExtraFolder& extra) { return extra.name == folder.name; });
        std::error_code ignored;
        if (!named && fs::is_directory(folder.folder, ignored))
            places.push_back(placeOf(folder));
    }
    return places;
}

// Refuses two folders of one name and two names of one folder. With two names, one file could be open twice.
void refuseDoubles(const std::vector<Place>& places)
{
    for (auto place = places.begin(); place != places.end(); ++place) {
        struct stat status {};
        ::fstat(place->opened.get(), &status);
        for (auto earlier = places.begin(); earlier != place; ++earlier) {
            if (earlier->name == place->name)
                throw Refusal("The device has two folders named \"" + text::toUtf8(place->name) +
                              "\": " + quoted(earlier->folder) + " and " + quoted(place->folder) + ".");
            struct stat other {};
            ::fstat(earlier->opened.get(), &other);
            if (status.st_dev == other.st_dev && status.st_ino == other.st_ino)
                throw Refusal("The folder " + quoted(place->folder) + " is on the device already, as \"\\" +
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
std::optional<std::string> OpenedDevice::whatIsHiddenBy(const Place& place) const
{
    const auto hostName = text::toHostName(place.name);
    if (place.name.empty() || !hostName)
        return std::nullopt;
    const fs::path own = folder_ / "object-store" / *hostName;
    std::error_code error;
    if (!fs::exists(fs::symlink_status(own, error)) || fs::is_empty(own, error))
        return std::nullopt;
    return "\"\\" + text::toUtf8(place.name) + "\" is the folder " + quoted(place.folder) + ": " + quoted(own) +
           " is hidden and isn't backed up.";
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

    std::vector<Place> places;
    places.push_back({.name = {},
                      .folder = folder_ / "object-store",
                      .opened = openOwnFolder(folder_ / "object-store"),
                      .card = false,
                      .capacity = {}});
    (void)openOwnFolder(folder_ / "cards");
    std::ranges::move(cardsIn(folder_ / "cards"), std::back_inserter(places));
    std::string sentence;
    if (!registry::openRegistry(folder_ / "device.db", sentence))
        throw Refusal(sentence);
    if (!sentence.empty())
        warnings.push_back(sentence);
    noteDatabase(lock_);
    std::ranges::move(rememberedPlaces(extras), std::back_inserter(places));
    for (const ExtraFolder& extra : extras)
        places.push_back(placeOf(extra));
    refuseDoubles(places);
    for (Place& place : places) {
        if (auto warning = whatIsHiddenBy(place))
            warnings.push_back(std::move(*warning));
        mount(std::move(place));
    }
    const Descriptor own = openFolder(folder_);
    for (const std::u16string& name : file::setLeftTemporariesAside(own.get()))
        warnings.push_back("A run that was killed left the temporary file \"\\" + text::toUtf8(name) +
                           "\" on the device; it was moved to " + quoted(folder_ / "left-behind") + ".");
    return warnings;
}

void OpenedDevice::mount(Place place)
{
    if (place.card) {
        // Open the folder again, since the name space closes the other descriptor before the lock may be released.
        Descriptor& lock =
            cardLocks_.emplace_back(::openat(place.opened.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        lockCard(lock, place.folder);
    }
    const std::string name = text::toUtf8(place.name);
    if (!file::addMount({.name = std::move(place.name),
                         .folder = place.opened.release(),
                         .card = place.card,
                         .capacity = place.capacity}))
        throw Refusal("The folder " + quoted(place.folder) + " can't be shown as \"\\" + name + "\" on the device.");
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
