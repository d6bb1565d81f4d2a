#include "engine_fixture.h"

#include "engine/options.h"
#include "store/object_store.h"
#include "time/clock.h"

#include <chrono>

Options gOptions;

namespace fs = std::filesystem;

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

void EngineTest::write(const std::string& name, const std::string& content) const
{
    hostWrite(root() / name, content);
    // A file that was written a moment ago isn't deleted.
    fs::last_write_time(root() / name, fs::file_time_type::clock::now() - std::chrono::seconds(10));
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
