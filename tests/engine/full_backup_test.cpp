// full_backup_test.cpp - what a backup of everything takes along and what it leaves out.

#include "engine_fixture.h"

#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "kernel/troubles.h"
#include "set/set_state.h"

#include "ce/outcome.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <fstream>

namespace {

class FullBackupTest : public EngineTest {
protected:
    FullBackupTest()
    {
        gFullFiles = 1;
        gFullDatabases = 0;
        gFullRegistry = 0;
    }

    // The names of a full backup, in no order.
    std::vector<std::u16string> backedUp()
    {
        gUser.shown.clear();
        RunFullBackup();
        std::vector<std::u16string> names = gUser.shownWith(u"message File: ");
        std::sort(names.begin(), names.end());
        return names;
    }
};

}  // namespace

TEST_F(FullBackupTest, TakesFilesAndLeavesOutCardsTopLevelSetsAndRom)
{
    write("a.txt", "a");
    write("deep/er/b.txt", "b");
    write("x.QDT", "");
    write("x.QLT", "");
    write(".QDT", "");
    write("y.qdt", "");
    write("QDT", "");
    write("rom.dll", "r");
    ASSERT_EQ(setxattr((store_ / "rom.dll").c_str(), "user.DOSATTRIB", "0x40", 4, 0), 0);
    std::filesystem::create_directories(card_ / "photos");
    std::ofstream(card_ / "on card.txt") << "c";
    std::ofstream(card_ / "photos" / "p.jpg") << "p";
    const std::vector<std::u16string> expected = {u"\\Card\\photos\\p.jpg", u"\\QDT", u"\\a.txt", u"\\deep\\er\\b.txt",
                                                  u"\\y.qdt"};
    EXPECT_EQ(backedUp(), expected);
    EXPECT_EQ(gFileList->Count(), 0U) << "the lists end empty";
}

TEST_F(FullBackupTest, FileInUseStaysOut)
{
    write("free", "");
    write("busy", "");
    std::ofstream holder(store_ / "busy", std::ios::app);
    EXPECT_EQ(backedUp(), std::vector<std::u16string>{u"\\free"});
}

TEST_F(FullBackupTest, LinksAndFifosAreNoPartOfTheDevice)
{
    write("real", "r");
    std::filesystem::create_symlink("/etc/passwd", store_ / "link");
    std::filesystem::create_directory_symlink("/etc", store_ / "folder-link");
    ASSERT_EQ(mkfifo((store_ / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(backedUp(), std::vector<std::u16string>{u"\\real"});
}

TEST_F(FullBackupTest, PathsThatDoNotFitAreToldAfterTheBackupAndCostNoOthers)
{
    const std::string folder = std::string(200, 'd') + "/";
    std::vector<std::u16string> fit;
    for (const std::string& name :
         {std::string("a"), std::string(55, 'e') + "/x", std::string(57, 'n'), std::string("z")}) {
        write(folder + name, "");
        std::u16string path =
            u"\\" + std::u16string(folder.begin(), folder.end()) + std::u16string(name.begin(), name.end());
        std::replace(path.begin(), path.end(), u'/', u'\\');
        fit.push_back(path);
        // One character more.
        if (name.size() > 1)
            write(folder + name[0] + name, "");
    }
    BeginJob();
    const std::vector<std::u16string> names = backedUp();
    ASSERT_EQ(names.size(), fit.size());
    for (std::size_t i = 0; i < names.size(); i++)
        EXPECT_TRUE(fit[i].starts_with(names[i])) << "a message cuts what is longest";
    using namespace platform::kernel;
    EXPECT_EQ(troublesOf(Trouble::Storing, Troubled::File, Since::Job).size(), 2U);
    const auto boxes = gUser.shownWith(u"box ");
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].starts_with(u"Info|2 paths are too long and were left out. The first is:\n\\ddd"));
    EXPECT_TRUE(boxes[0].ends_with(u"|48"));
    EXPECT_EQ(boxes[0].find(u'*'), std::u16string::npos) << "a name, not what it is searched by";
    EXPECT_EQ(gUser.shown.back().substr(0, 3), u"box");
    gUser.choice.clear();
    backedUp();
    EXPECT_EQ(gUser.shownWith(u"box ").size(), 0U) << "not after a backup that was left";
}

TEST_F(FullBackupTest, FileThatGoesAwayBeforeItsTurnIsReportedOnlyIfItWasMarked)
{
    using namespace platform::kernel;
    const auto reported = [&](const auto& run) {
        write("one", "");
        write("two", "");
        // Whichever comes first takes the other one along.
        gUser.seesMessage = [this](const std::u16string& message) {
            removeAll(message == u"File: \\one" ? "two" : "one");
            gUser.seesMessage = nullptr;
        };
        BeginJob();
        run();
        return troublesOf(Trouble::Storing, Troubled::File, Since::Job).size();
    };
    EXPECT_EQ(reported([] { RunFullBackup(); }), 0U);
    mark(u"\\one");
    mark(u"\\two");
    EXPECT_EQ(reported([] { RunBackup(BackupSelectedItems); }), 1U);
}

TEST_F(FullBackupTest, PathsThatDoNotFitAreToldWhenThereIsNothingElse)
{
    write(std::string(130, 'd') + "/" + std::string(130, 'n'), "too long");
    EXPECT_EQ(RunFullBackup(), 1U);
    const auto boxes = gUser.shownWith(u"box ");
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_TRUE(boxes[1].starts_with(u"Info|1 path is too long"));
}

TEST_F(FullBackupTest, CancelKeepsTheMarksAndNoBoxLosesThem)
{
    mark(u"\\kept");
    gRegistryMarked = 1;
    gUser.confirms = false;
    EXPECT_EQ(RunFullBackup(), 0U);
    EXPECT_EQ(gFileList->Count(), 1U);
    gUser.confirms = true;
    gFullFiles = 0;
    EXPECT_EQ(RunFullBackup(), 1U);
    EXPECT_EQ(gUser.shown.back(), u"box Info|No item to backup!|0");
    EXPECT_EQ(gFileList->Count(), 0U);
    EXPECT_EQ(gRegistryMarked, 1U) << "the mark of the registry is given back";
    gRegistryMarked = 0;
}

TEST_F(FullBackupTest, ListingStepsForWhatItTriesInAWindowThatRunsOutByItself)
{
    openStore();
    for (const WCHAR* name : {u"\\system's", u"D"})
        makeDatabase(name, 1);
    write("a", "");
    write("busy", "");
    write("old.QLT", "");
    std::ofstream(card_ / "on card.txt");
    const std::ofstream holder(store_ / "busy", std::ios::app);
    gFullDatabases = 1;
    gUser.notesAll = true;
    RunFullBackup();
    EXPECT_EQ(gUser.transcript(),
              "dialog backup 1; "
              "open Construct File List|Computing list to backup|1500|10; wait; step; step; no wait; animate; "
              "open Construct Database List|Computing list to backup|1500|10; wait; step; step; no wait; animate; "
              "choose Select your storage|\\Card|Main device; "
              "open Backuping Files|Backuping Files|1000|1000; wait; "
              "message File: \\a; count Backuped: 0; step; no wait; close; "
              "open Databases |Databases |1000|1000; wait; "
              "message Database: D; count Backuped: 0; step; no wait; close");
    EXPECT_EQ(gDatabaseList->Count(), 0U) << "the lists end empty";
}

TEST_F(FullBackupTest, RegistryGoesByItsBoxAndItsMarkIsGivenBack)
{
    static int copies;
    copies = 0;
    gRegCopyFile = [](const WCHAR*) { return static_cast<BOOL>(++copies); };
    write("a", "");
    for (const DWORD mark : {0, 1}) {
        gRegistryMarked = mark;
        gFullRegistry = 1 - mark;
        RunFullBackup();
        EXPECT_EQ(copies, 1) << "by the first of the two alone";
        EXPECT_EQ(gRegistryMarked, mark);
    }
    gRegCopyFile = nullptr;
}
