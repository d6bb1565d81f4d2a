// engine_fixture.h - a device with a card, for the tests of the runs. Its clock always shows 5 March 2000, 09:07:03.
#pragma once

#include "file_fixture.h"
#include "scripted_user.h"
#include "written_bytes.h"

#include "database/device_database.h"
#include "engine/backup_run.h"
#include "engine/restore_run.h"
#include "set/set_state.h"

#include "ce/store.h"

#include <vector>

class EngineTest : public FileTest {
protected:
    EngineTest();
    ~EngineTest() override;

    // Mounts the device's folders, the card with a capacity if one is given.
    void mount(std::optional<std::uint64_t> cardCapacity = std::nullopt) const
    {
        remount();
        addFolder(u"Card", true, cardCapacity);
    }

    // Files of the object store, by host path below it.
    void write(const std::string& name, const std::string& content) const;
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
    // 0 if no database has this name.
    static DWORD typeOfDatabase(const std::u16string& name);

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
