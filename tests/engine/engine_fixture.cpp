#include "engine_fixture.h"

#include "database/device_database.h"
#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/restore_run.h"
#include "set/set_state.h"
#include "store/object_store.h"
#include "time/clock.h"

#include "ce/store.h"

#include <chrono>

Options gOptions;

namespace fs = std::filesystem;

namespace {

BOOL add(ItemList* list, const std::u16string& name)
{
    return list->Add(name.c_str(), static_cast<DWORD>((name.size() + 1) * sizeof(WCHAR)));
}

}  // namespace

EngineTest::EngineTest() : FileTest(memoryFolder())
{
    platform::time::stopClockAt({2000, 3, 0, 5, 9, 7, 3, 0});
    platform::time::setShortDateFormat(u"dd/MM/yyyy");
    gOptions = {};
    gOptions.restoreMode = RestoreModeReplace;
    gUser = {};
    answerRuns();
    gUser.choice = u"\\Card";
    RenewLists();
    card_ = addFolder(u"Card", true);
    set_ = card_ / "QUILBOX";
}

EngineTest::~EngineTest()
{
    EXPECT_FALSE(gUser.waitCursor) << "each run has ended";
    platform::store::closeStore();
    platform::database::closeDeviceDatabase();
    platform::time::resumeClock();
    platform::time::setShortDateFormat(u"");
    RenewLists();
    gRegistryMarked = 0;
}

void EngineTest::mount(std::optional<std::uint64_t> cardCapacity) const
{
    remount();
    addFolder(u"Card", true, cardCapacity);
}

void EngineTest::write(const std::string& name, const std::string& content) const
{
    hostWrite(root() / name, content);
    // A file that was written a moment ago isn't deleted.
    fs::last_write_time(root() / name, fs::file_time_type::clock::now() - std::chrono::seconds(10));
}

bool EngineTest::exists(const std::string& name) const
{
    return fs::exists(fs::symlink_status(root() / name));
}

void EngineTest::removeAll(const std::string& name) const
{
    fs::remove_all(root() / name);
}

void EngineTest::writeOnCard(const std::string& name, const std::string& content) const
{
    hostWrite(set_ / name, content);
}

void EngineTest::openStore() const
{
    std::string error;
    ASSERT_TRUE(platform::database::openDeviceDatabase(outside() / "device.db", error)) << error;
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

void EngineTest::restore()
{
    gUser.choice = u"\\Card\\QUILBOX\\QLBX0001.QLT";
    RunRestore(RestoreFull);
    gUser.choice = u"\\Card";
}
