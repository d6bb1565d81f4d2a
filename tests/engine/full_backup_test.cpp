// full_backup_test.cpp - what a backup of everything includes and what it leaves out.

#include "engine_fixture.h"

#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "thread_ahead.h"

#include "ce/outcome.h"
#include "ce/thread.h"

#include <sys/stat.h>

#include <utility>

namespace {

class FullBackupTest : public EngineTest {
protected:
    FullBackupTest()
    {
        gFullFiles = 1;
        gFullDatabases = 0;
        gFullRegistry = 0;
    }

    // Makes a full backup and returns the names of its files, sorted.
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

TEST_F(FullBackupTest, EveryFileIsTakenExceptSetsLinksRomFilesFilesInUseAndFilesDirectlyOnACard)
{
    for (const char* name : {"a.txt", "deep/er/b.txt", "x.QDT", "x.QLT", ".QDT", "y.qdt", "QDT", "rom.dll", "busy"})
        write(name, "");
    hostMark(root() / "rom.dll", "0x40");
    const std::ofstream holder(root() / "busy", std::ios::app);
    std::filesystem::create_symlink("/etc/passwd", root() / "link");
    std::filesystem::create_directory_symlink("/etc", root() / "folder-link");
    ASSERT_EQ(mkfifo((root() / "fifo").c_str(), 0600), 0);
    std::filesystem::create_directories(card_ / "photos");
    hostWrite(card_ / "on card.txt", "c");
    hostWrite(card_ / "photos" / "p.jpg", "p");
    const std::vector<std::u16string> expected = {u"\\Card\\photos\\p.jpg", u"\\QDT", u"\\a.txt", u"\\deep\\er\\b.txt",
                                                  u"\\y.qdt"};
    EXPECT_EQ(backedUp(), expected);
    EXPECT_EQ(gFileList->Count(), 0U) << "a full backup leaves no marks";
}

TEST_F(FullBackupTest, PathsThatDoNotFitAreReportedAfterTheBackupAndNoOthersAreMissing)
{
    using namespace platform::kernel;
    const std::string folder(200, 'd');
    const std::string fit[] = {"a", std::string(55, 'e') + "/x", std::string(57, 'n')};
    for (const std::string& name : fit)
        write(folder + "/" + name, "");
    for (const std::size_t level : {1U, 2U})  // one character too long
        write(folder + "/" + fit[level][0] + fit[level], "");
    BeginJob();
    EXPECT_EQ(backedUp().size(), std::size(fit));
    EXPECT_EQ(troublesOf(Trouble::Storing, Troubled::File, Since::Job).size(), 2U);
    const auto boxes = gUser.shownWith(u"box ");
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(gUser.shown.back(), u"box " + boxes[0]);
    EXPECT_TRUE(boxes[0].starts_with(u"Info|2 paths are too long and were left out. The first is:\n\\ddd"));
    EXPECT_TRUE(boxes[0].ends_with(u"|48"));
    EXPECT_EQ(boxes[0].rfind(u'|') - boxes[0].find(u'\n'), 261U) << "the whole path, one character too long";
    EXPECT_EQ(boxes[0].find(u'*'), std::u16string::npos) << "a name, not a search pattern";
    gUser.choice.clear();
    backedUp();
    EXPECT_EQ(gUser.shownWith(u"box ").size(), 0U) << "not after a backup that was cancelled";

    removeAll(folder);
    write(std::string(130, 'd') + "/" + std::string(130, 'n') + "/in a folder that can't be entered", "");
    backedUp();
    ASSERT_EQ(gUser.shownWith(u"box ").size(), 2U) << "also if there is nothing to back up";
    EXPECT_TRUE(gUser.shown.back().starts_with(u"box Info|1 path is too long"));
}

TEST_F(FullBackupTest, FileThatDisappearsBeforeItIsReadIsReportedOnlyIfItWasMarked)
{
    using namespace platform::kernel;
    const auto reported = [&](const auto& run) {
        write("one", "");
        write("two", "");
        // When the backup begins the first file, the test deletes the other one.
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
    gOptions.deleteBackedUp = 1;  // then no file is read before its turn
    EXPECT_EQ(reported([] { RunBackup(BackupSelectedItems); }), 1U);
}

TEST_F(FullBackupTest, CancelKeepsTheMarksAndABackupOfNothingClearsThem)
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
    EXPECT_EQ(gRegistryMarked, 1U) << "the mark of the registry is restored";
    gRegistryMarked = 0;
}

TEST_F(FullBackupTest, ListingMovesTheProgressBarForEachFileAndDatabaseThatItTries)
{
    openStore();
    for (const WCHAR* name : {u"\\system's", u"D"})
        makeDatabase(name, 1);
    write("a", "");
    write("busy", "");
    write("old.QLT", "");
    hostWrite(card_ / "on card.txt", "");
    const std::ofstream holder(root() / "busy", std::ios::app);
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
    EXPECT_EQ(gDatabaseList->Count(), 0U) << "a full backup leaves no marks";
}

TEST_F(FullBackupTest, RegistryMarkIsRestoredAndOnlyATickedBoxBacksUpTheRegistry)
{
    static int copies;
    copies = 0;
    gRegCopyFile = [](const WCHAR*) { return static_cast<BOOL>(++copies); };
    write("a", "");
    for (const DWORD mark : {0U, 1U}) {
        gRegistryMarked = mark;
        gFullRegistry = 1 - mark;
        RunFullBackup();
        EXPECT_EQ(copies, 1) << "only the first of the two runs has the box ticked";
        EXPECT_EQ(gRegistryMarked, mark);
    }
    gRegCopyFile = nullptr;
}

// The listing of the device already packs tiny files. The stream of a file is stored only if the file hasn't changed
// since it was packed.
TEST_F(FullBackupTest, TinyFileIsStoredAsItIsWhenItsTurnComes)
{
    using namespace platform::kernel;
    const char* const names[] = {"same", "rewritten", "replaced", "longer", "gone", "grew large", "used"};
    for (const char* name : names)
        write(name, std::string("old ") + name);
    const auto time = std::filesystem::last_write_time(root() / "rewritten");
    ListDevice();
    ASSERT_EQ(gFileList->Count(), std::size(names));
    hostWrite(root() / "rewritten", "new rewritten");
    std::filesystem::last_write_time(root() / "rewritten", time);
    write("other", "new replaced");
    std::filesystem::rename(root() / "other", root() / "replaced");
    write("longer", "new and longer");
    removeAll("gone");
    write("grew large", patternBytes(300'000));
    const OtherProcess user(root() / "used", O_WRONLY);
    ASSERT_TRUE(user.opened());
    BeginJob();
    BackUpTo({u"\\Card", 0}, BackupListedItems);
    EXPECT_EQ(troublesOf(Trouble::Storing, Troubled::File, Since::Job).size(), 0U);
    removeAll("");
    std::filesystem::create_directories(root());
    mount();
    restore();
    EXPECT_EQ(read("same"), "old same");
    EXPECT_EQ(read("rewritten"), "new rewritten");
    EXPECT_EQ(read("replaced"), "new replaced");
    EXPECT_EQ(read("longer"), "new and longer");
    EXPECT_EQ(read("grew large"), patternBytes(300'000));
    EXPECT_EQ(read("used"), "old used") << "it was read before another program opened it";
    EXPECT_FALSE(exists("gone"));
}

// More tiny files than the listing has room for.
TEST_F(FullBackupTest, EachOfManyTinyFilesIsStoredUnderItsName)
{
    constexpr std::size_t Files = 4300;
    const std::string pattern = patternBytes(2000);
    for (std::size_t i = 0; i < Files; i++)
        write("d" + std::to_string(i % 50) + "/" + std::to_string(i), std::to_string(i) + pattern);
    RunFullBackup();
    removeAll("");
    std::filesystem::create_directories(root());
    mount();
    restore();
    for (std::size_t i = 0; i < Files; i++)
        ASSERT_EQ(read("d" + std::to_string(i % 50) + "/" + std::to_string(i)), std::to_string(i) + pattern);
}

TEST_F(FullBackupTest, SetLogAndStepsAreTheSameHoweverFarTheSecondThreadIsAhead)
{
    constexpr std::size_t Sizes[] = {0, 1, 500, 4093, 60'000, 131'071, 131'072, 131'073, 200'000, 12};
    const std::string pattern = patternBytes(200'000);
    for (std::size_t i = 0; i < 300; i++) {
        const std::size_t size = i % 5 == 0 ? Sizes[i / 5 % std::size(Sizes)] : i;
        write("d" + std::to_string(i % 7) + "/" + std::to_string(i), pattern.substr(0, size));
    }
    for (const char* name : {"d3/busy", "d5/busy too"})
        write(name, "");
    const std::ofstream holders[] = {std::ofstream(root() / "d3/busy", std::ios::app),
                                     std::ofstream(root() / "d5/busy too", std::ios::app)};
    gOptions.generateLog = 1;
    gUser.notesAll = true;
    std::vector<std::string> runs[2];
    // The second thread is never woken, or for each waiting item.
    for (const DWORD wakes : {AheadItems + 1, DWORD{1}}) {
        gAheadWakes = wakes;
        std::filesystem::remove_all(set_);
        gUser.shown.clear();
        // The pause at the first item lets the second thread get far ahead. Later the second thread falls behind.
        gUser.seesMessage = [first = true](const std::u16string&) mutable {
            if (std::exchange(first, false))
                Sleep(20);
        };
        RunFullBackup();
        runs[wakes == 1] = {readOnCard("QLBX0001.QLT"), readOnCard("QLBX0001.QDT"), readOnCard("BACKUP0001.LOG"),
                            gUser.transcript()};
    }
    gAheadWakes = AheadItems / 2;
    EXPECT_EQ(gUser.shownWith(u"message File: ").size(), 300U);
    EXPECT_TRUE(runs[0] == runs[1]);
}
