#include "device/remembered_folders.h"

#include "refusal.h"

#include "database/device_database.h"
#include "text/host_name.h"

#include <span>

namespace platform::device {

namespace {

using database::DatabaseUse;
using database::Step;

}  // namespace

std::vector<ExtraFolder> rememberedFolders()
{
    std::vector<ExtraFolder> folders;
    const DatabaseUse database;
    if (!database)
        return folders;
    auto rows = database->prepare("SELECT name, folder, card, capacity FROM remembered_folder ORDER BY name");
    Step step = rows.step();
    for (; step == Step::Row; step = rows.step()) {
        const auto path = rows.bytes(1);
        ExtraFolder& folder = folders.emplace_back();
        folder.name = text::toUtf8(rows.text(0));
        folder.folder = std::string(reinterpret_cast<const char*>(path.data()), path.size());
        folder.card = rows.integer(2) != 0;
        if (!rows.isNull(3))
            folder.capacity = static_cast<std::uint64_t>(rows.integer(3));
    }
    if (step != Step::Done)
        throw Refusal("The folders that the device remembers can't be read (" + database->lastMessage() + ").");
    return folders;
}

bool rememberFolder(const ExtraFolder& folder)
{
    const std::u16string name = text::fromUtf8(folder.name);
    const DatabaseUse database;
    if (!database || text::toUtf8(name) != folder.name || !text::toHostName(name))
        return false;
    const std::string path = std::filesystem::absolute(folder.folder).string();
    const int card = folder.card ? 1 : 0;
    auto write = database->prepare("INSERT OR REPLACE INTO remembered_folder (name, folder, card, capacity) "
                                   "VALUES (?, ?, ?, ?)");
    const auto bytes = std::as_bytes(std::span(path));
    if (folder.capacity)
        write.bind(name, bytes, card, static_cast<std::int64_t>(*folder.capacity));
    else
        write.bind(name, bytes, card, nullptr);
    return write.step() == Step::Done;
}

bool forgetFolder(const std::string& name)
{
    const DatabaseUse database;
    if (!database)
        return false;
    auto forget = database->prepare("DELETE FROM remembered_folder WHERE name = ? RETURNING name");
    return forget.bind(text::fromUtf8(name)).step() == Step::Row && forget.step() == Step::Done;
}

}  // namespace platform::device
