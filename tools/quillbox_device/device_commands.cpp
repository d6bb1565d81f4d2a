#include "device_commands.h"

#include "existing_device.h"
#include "failure.h"
#include "report.h"
#include "screen_text/screen_text.h"
#include "stored_databases.h"

#include "device/device.h"
#include "device/remembered_folders.h"
#include "text/host_name.h"

#include <iostream>

#include <unistd.h>

namespace quillbox_device {

namespace fs = std::filesystem;
using platform::device::ExtraFolder;
using Json = nlohmann::ordered_json;
using screen_text::counted;
using screen_text::onScreen;

namespace {

bool isThere(const ExtraFolder& folder)
{
    std::error_code ignored;
    return fs::is_directory(folder.folder, ignored);
}

void add(Report& report, const ExtraFolder& folder)
{
    const Json capacity = folder.capacity ? Json(*folder.capacity) : Json(nullptr);
    std::string line =
        (folder.card ? "card    " : "folder  ") + onScreen(folder.name) + " = " + onScreen(folder.folder.string());
    if (folder.capacity)
        line += ", " + std::to_string(*folder.capacity) + " bytes";
    report.add("folders",
               {{"name", folder.name},
                {"folder", folder.folder.string()},
                {"card", folder.card},
                {"capacity", capacity},
                {"there", isThere(folder)}},
               line + (isThere(folder) ? "" : " (not there)"));
}

struct Content {
    std::uintmax_t files = 0;
    std::uintmax_t bytes = 0;
    std::uintmax_t closedFolders = 0;  // number of folders that can't be read
};

Content contentOf(const fs::path& folder)
{
    Content content;
    for (const auto& entry : fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied)) {
        const fs::file_type type = entry.symlink_status().type();
        if (type == fs::file_type::directory && ::access(entry.path().c_str(), R_OK | X_OK) != 0)
            ++content.closedFolders;
        if (type != fs::file_type::regular)
            continue;
        ++content.files;
        std::error_code gone;
        const std::uintmax_t bytes = entry.file_size(gone);
        content.bytes += gone ? 0 : bytes;
    }
    return content;
}

std::string textOf(const std::string& what, const Content& content)
{
    return onScreen(what) + ": " + counted(content.files, "file") + ", " + counted(content.bytes, "byte");
}

// True if the object store has something of this name. A card or folder of the same name would hide it.
bool holdsName(const fs::path& objectStore, const std::string& name)
{
    const auto hostName = platform::text::toHostName(platform::text::fromUtf8(name));
    return hostName && fs::exists(fs::symlink_status(objectStore / *hostName));
}

}  // namespace

void show(const fs::path& device, bool json)
{
    const DeviceToRead opened(device);
    std::uintmax_t closedFolders = 0;
    Report report(json, {"cards", "folders", "databases"});
    const Content own = contentOf(opened.folder() / "object-store");
    closedFolders += own.closedFolders;
    report.set("fileCount", own.files, textOf("object store", own));
    report.set("bytes", own.bytes, "");
    const fs::path cards = opened.folder() / "cards";
    for (const auto& entry : fs::exists(cards) ? fs::directory_iterator(cards) : fs::directory_iterator()) {
        if (entry.symlink_status().type() != fs::file_type::directory)
            continue;
        const std::string name = entry.path().filename().string();
        const Content card = contentOf(entry.path());
        closedFolders += card.closedFolders;
        report.add("cards", {{"name", name}, {"fileCount", card.files}, {"bytes", card.bytes}},
                   textOf("card " + name, card));
    }
    for (const ExtraFolder& folder : platform::device::rememberedFolders())
        add(report, folder);
    for (const StoredDatabase& database : storedDatabases())
        report.add("databases", jsonOf(database), quillbox_device::textOf(database));
    const bool refused = fs::exists(fs::symlink_status(opened.folder() / "registry.refused"));
    report.set("registryRefused", refused,
               refused ? "registry.refused: a restored registry that was damaged and not put in force" : "");
    report.finish();
    if (closedFolders != 0)
        throw Failure(counted(closedFolders, "folder") + " can't be read, so the numbers don't include their content.");
}

void init(const fs::path& device, bool demonstration)
{
    if (fs::exists(device / "object-store"))
        throw Failure("\"" + device.string() + "\" is a device already.");
    const auto made = platform::device::openDevice(device, {}, demonstration);
    if (!made.device)
        throw Failure(made.error.sentence);
}

void listCards(const fs::path& device, bool json)
{
    const DeviceToRead opened(device);
    Report report(json, {"folders"});
    for (const ExtraFolder& folder : platform::device::rememberedFolders())
        add(report, folder);
    report.finish();
}

void addCard(const fs::path& device, const std::string& name, const fs::path& folder,
             std::optional<std::uint64_t> capacity, bool plainFolder)
{
    const ExtraFolder added{name, fs::absolute(folder).lexically_normal(), !plainFolder, capacity};
    if (!fs::is_directory(folder))
        throw Failure("\"" + folder.string() + "\" is not a folder.");
    // The first call only checks the device and prints its warnings. The second call opens the device together with the
    // new folder, and so makes all checks of a normal start. The device stores the folder in its list only if these
    // checks and the check of the name succeed.
    openExisting(device).reset();
    const auto tried = platform::device::openDevice(device, {added}, false);
    if (!tried.device)
        throw Failure(tried.error.sentence);
    if (holdsName(tried.device->folder() / "object-store", name))
        throw Failure("The device's object store has \"" + name +
                      "\" already, which would be hidden and missing from every backup.");
    if (!platform::device::rememberFolder(added))
        throw Failure("\"" + name + "\" can't be remembered.");
}

void removeCard(const fs::path& device, const std::string& name)
{
    const auto opened = openExisting(device);
    if (!platform::device::forgetFolder(name))
        throw Failure("The device remembers no card or folder of the name \"" + name + "\".");
}

}  // namespace quillbox_device
