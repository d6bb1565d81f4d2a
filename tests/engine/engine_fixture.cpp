// engine_fixture.cpp - see engine_fixture.h.

#include "engine_fixture.h"

#include "database/device_database.h"
#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/restore_run.h"
#include "file/name_space.h"
#include "set/set_state.h"
#include "store/object_store.h"

#include "ce/store.h"
#include "ce/text.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>

Options gOptions;

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

int folderDescriptor(const fs::path& path)
{
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

BOOL add(ItemList* list, const std::u16string& name)
{
    return list->Add(name.c_str(), static_cast<DWORD>((name.size() + 1) * sizeof(WCHAR)));
}

}  // namespace

std::string numberBytes(std::uint32_t value)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

std::string textBytes(const std::string& text)
{
    std::string bytes;
    for (const char c : text + '\0')
        bytes += std::string{c, '\0'};
    return bytes;
}

std::string entryBytes(char kind, const std::string& name, std::uint32_t start, std::uint32_t end)
{
    return std::string{kind, 1} + numberBytes(static_cast<std::uint32_t>(name.size()) + 1) + textBytes(name) +
           numberBytes(start) + numberBytes(end);
}

EngineTest::EngineTest()
{
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder                   ? folder
                                      : fs::exists("/dev/shm") ? "/dev/shm"
                                                               : "/tmp") +
                          "/engine.XXXXXX";
    base_ = mkdtemp(pattern.data());
    store_ = base_ / "object-store";
    card_ = base_ / "Card";
    fs::create_directories(store_);
    fs::create_directories(card_);
    gOptions = {};
    gOptions.restoreMode = RestoreModeReplace;
    gUser = {};
    gUser.choice = u"\\Card";
    RenewLists();
    mount();
}

EngineTest::~EngineTest()
{
    EXPECT_FALSE(gUser.waitCursor) << "no run is left";
    platform::store::closeStore();
    platform::database::closeDeviceDatabase();
    platform::file::removeAllMounts();
    RenewLists();
    gRegistryMarked = 0;
    fs::remove_all(base_);
}

void EngineTest::mount(std::optional<std::uint64_t> cardCapacity)
{
    using platform::file::addMount;
    platform::file::removeAllMounts();
    ASSERT_TRUE(addMount({.name = u"", .folder = folderDescriptor(store_), .card = false, .capacity = {}}));
    ASSERT_TRUE(addMount({.name = u"Card", .folder = folderDescriptor(card_), .card = true, .capacity = cardCapacity}));
}

void EngineTest::write(const std::string& name, const std::string& content)
{
    fs::create_directories((store_ / name).parent_path());
    std::ofstream(store_ / name, std::ios::binary) << content;
    // A file that was written a moment ago isn't deleted.
    fs::last_write_time(store_ / name, fs::file_time_type::clock::now() - std::chrono::seconds(10));
}

std::string EngineTest::read(const std::string& name) const
{
    return contentOf(store_ / name);
}

bool EngineTest::exists(const std::string& name) const
{
    return fs::exists(fs::symlink_status(store_ / name));
}

void EngineTest::removeAll(const std::string& name)
{
    fs::remove_all(store_ / name);
}

void EngineTest::openStore() const
{
    std::string error;
    ASSERT_TRUE(platform::database::openDeviceDatabase(base_ / "device.db", error)) << error;
}

void EngineTest::makeDatabase(const std::u16string& name, DWORD type)
{
    SORTORDERSPEC order = {0x20002, CEDB_SORT_DESCENDING};
    ASSERT_NE(CeCreateDatabase(name.c_str(), type, 1, &order), 0U);
}

DWORD EngineTest::typeOfDatabase(const std::u16string& name)
{
    CEOID oid = 0;
    const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return 0;
    CloseHandle(database);
    CEOIDINFO info = {};
    return CeOidGetInfo(oid, &info) ? info.infDatabase.dwDbaseType : 0;
}

void EngineTest::mark(const std::u16string& path)
{
    ASSERT_TRUE(add(gFileList, path));
}

void EngineTest::markDatabase(const std::u16string& name)
{
    ASSERT_TRUE(add(gDatabaseList, name));
}

void EngineTest::backUp()
{
    gComment[0] = 0;
    RunBackup(BackupListedItems);
}

void EngineTest::restore(const std::string& list)
{
    gUser.choice = u"\\Card\\QUILBOX\\" + std::u16string(list.begin(), list.end()) + u".QLT";
    RunRestore(RestoreFull);
    gUser.choice = u"\\Card";
}

std::string EngineTest::cardFile(const std::string& name) const
{
    return contentOf(card_ / "QUILBOX" / name);
}
