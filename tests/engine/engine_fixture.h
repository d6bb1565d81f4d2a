// engine_fixture.h - a device with a card, for the tests of the runs. Its clock always shows 5 March 2000, 09:07:03.
#pragma once

#include "file_fixture.h"
#include "scripted_user.h"
#include "written_bytes.h"

#include "database/device_database.h"
#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/restore_run.h"
#include "set/set_state.h"
#include "store/object_store.h"
#include "time/clock.h"

#include "ce/store.h"

#include <chrono>

#include <vector>

class EngineTest : public FileTest {
protected:
    EngineTest() : FileTest(memoryFolder())
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
    ~EngineTest() override
    {
        EXPECT_FALSE(gUser.waitCursor) << "each run has ended";
        platform::store::closeStore();
        platform::database::closeDeviceDatabase();
        platform::time::resumeClock();
        platform::time::setShortDateFormat(u"");
        RenewLists();
        gRegistryMarked = 0;
    }

    // Mounts the root and the card. `cardCapacity` limits the card's size.
    void mount(std::optional<std::uint64_t> cardCapacity = std::nullopt) const
    {
        remount();
        addFolder(u"Card", true, cardCapacity);
    }

    // Files of the object store. The name is the host path below its folder.
    void write(const std::string& name, const std::string& content) const
    {
        hostWrite(root() / name, content);
        // A backup doesn't delete a file that was written a moment ago.
        std::filesystem::last_write_time(root() / name,
                                         std::filesystem::file_time_type::clock::now() - std::chrono::seconds(10));
    }
    std::string read(const std::string& name) const { return hostRead(root() / name); }
    bool exists(const std::string& name) const
    {
        return std::filesystem::exists(std::filesystem::symlink_status(root() / name));
    }
    void removeAll(const std::string& name) const { std::filesystem::remove_all(root() / name); }

    // Files of QUILBOX on the card.
    void writeOnCard(const std::string& name, const std::string& content) const { hostWrite(set_ / name, content); }
    std::string readOnCard(const std::string& name) const { return hostRead(set_ / name); }

    // Opens the databases of the device. Few tests need them.
    void openStore() const
    {
        std::string error;
        ASSERT_TRUE(platform::database::openDeviceDatabase(outside() / "device.db", error)) << error;
    }
    static void makeDatabase(const std::u16string& name, DWORD type)
    {
        SORTORDERSPEC order = {0x20002, CEDB_SORT_DESCENDING};
        ASSERT_NE(CeCreateDatabase(name.c_str(), type, 1, &order), 0U);
    }
    // Returns 0 if no database has this name.
    static DWORD typeOfDatabase(const std::u16string& name)
    {
        CEOID oid = 0;
        const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
        if (database == INVALID_HANDLE_VALUE)
            return 0;
        CloseHandle(database);
        CEOIDINFO info = {};
        return CeOidGetInfo(oid, &info) ? info.infDatabase.dwDbaseType : 0;
    }

    static void mark(const std::u16string& path) { add(gFileList, path); }
    static void markDatabase(const std::u16string& name) { add(gDatabaseList, name); }
    // Backs the marked items up to the card.
    static void backUp()
    {
        gComment[0] = 0;
        RunBackup(BackupListedItems);
    }
    // Restores set 1 of the card. All files are replaced unless the test sets another policy.
    static void restore()
    {
        gUser.choice = u"\\Card\\QUILBOX\\QLBX0001.QLT";
        RunRestore(RestoreFull);
        gUser.choice = u"\\Card";
    }

    std::filesystem::path card_;
    std::filesystem::path set_;

private:
    static void add(ItemList* list, const std::u16string& name)
    {
        ASSERT_TRUE(list->Add(name.c_str(), static_cast<DWORD>((name.size() + 1) * sizeof(WCHAR))));
    }
};
