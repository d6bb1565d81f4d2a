// backup_run_test.cpp - a backup's questions, its order, its files, its log.

#include "engine_fixture.h"

#include "engine/backup_run.h"
#include "engine/options.h"
#include "file/host_faults.h"
#include "file/name_space.h"
#include "set/set_state.h"
#include "time/clock.h"

#include "ce/dialog.h"

#include <fcntl.h>

#include <cerrno>
#include <fstream>

namespace {

using Lines = std::vector<std::u16string>;

// 5 March 2000, 09:07:03.
constexpr SYSTEMTIME Then = {2000, 3, 0, 5, 9, 7, 3, 0};

class BackupRunTest : public EngineTest {
protected:
    BackupRunTest()
    {
        platform::time::stopClockAt(Then);
        platform::time::setShortDateFormat(u"dd/MM/yyyy");
    }
    ~BackupRunTest() override
    {
        platform::time::resumeClock();
        platform::time::setShortDateFormat(u"");
    }

    void makeList(int number, const std::string& content)
    {
        std::filesystem::create_directories(card_ / "QUILBOX");
        char name[32];
        snprintf(name, sizeof name, "QLBX%04d.QLT", number);
        std::ofstream(card_ / "QUILBOX" / name) << content;
    }

    // Backs one file up again and again, each time with the next host call failing, until the log has the line.
    void backUpUntilLogged(const std::string& line)
    {
        using namespace platform::file;
        mark(u"\\a");
        gOptions.generateLog = 1;
        for (std::uint64_t n = 1; cardFile("BACKUP0001.LOG").find(line + " \r\n") == std::string::npos; n++) {
            write("a", "content");
            std::filesystem::remove_all(card_ / "QUILBOX");
            mount();
            gUser.shown.clear();
            setFaultPlan({.kind = FaultKind::Fail, .nthCall = n, .error = EIO});
            backUp();
            ASSERT_GE(hostCallsMade(), n) << "no failing call was ever logged";
            clearFaultPlan();
        }
    }
};

}  // namespace

TEST_F(BackupRunTest, NothingMarkedTellsAndMakesNothing)
{
    for (const DWORD mode : {BackupListedItems, BackupSelectedItems}) {
        gUser.shown.clear();
        RunBackup(mode);
        EXPECT_EQ(gUser.shown, Lines{u"box Info|No item to backup!|0"});
    }
    EXPECT_TRUE(std::filesystem::is_empty(card_));
}

TEST_F(BackupRunTest, CommentHasTheDayFirstOnlyWhereTheShortDateHasItAndIsCutToFit)
{
    write("a", "");
    mark(u"\\a");
    platform::time::stopClockAt({2023, 11, 0, 24, 19, 30, 0, 0});
    gUser.comment = std::u16string(259, u'c');
    for (const WCHAR* format : {u"d.M.yyyy", u"dd/MM/yyyy", u"M/d/yy", u"yyyy-MM-dd", u"Dd"}) {
        platform::time::setShortDateFormat(format);
        RunBackup(BackupSelectedItems);
        const std::u16string date = format[0] == u'd' ? u"24/11/2023" : u"11/24/2023";
        EXPECT_EQ(gComment, u"Backup date:" + date + u" (19:30)\r\nComments:\r\n" + std::u16string(216, u'c'));
    }
    const std::string list = cardFile("QLBX0001.QLT");
    EXPECT_EQ(list.substr(0, 4), std::string("\x04\x01\0\0", 4)) << "260 with the terminator";
    EXPECT_EQ(list.substr(4 + 2 * 258, 4), std::string("c\0\0\0", 4));
}

TEST_F(BackupRunTest, TakenNumbersAreAskedAboutAndNoKeepsThem)
{
    write("a", "new");
    mark(u"\\a");
    makeList(1, "one");
    makeList(3, "three");
    backUp();
    EXPECT_EQ(gUser.shownWith(u"box "), Lines{u"Info?|Override \\Card\\QUILBOX\\QLBX0001.QLT file|260"});
    gUser.shown.clear();
    backUp();
    EXPECT_EQ(gUser.shownWith(u"box ").size(), 3U);
    EXPECT_EQ(cardFile("QLBX0001.QLT"), "one");
    EXPECT_EQ(cardFile("QLBX0003.QLT"), "three");
    EXPECT_EQ(cardFile("QLBX0002.QLT"), cardFile("QLBX0004.QLT"));
    EXPECT_FALSE(cardFile("QLBX0004.QDT").empty());
}

TEST_F(BackupRunTest, NinetyNineRefusalsChangeNothing)
{
    write("a", "new");
    mark(u"\\a");
    for (int number = 1; number <= 99; number++)
        makeList(number, "kept");
    gOptions.generateLog = 1;
    backUp();
    EXPECT_EQ(gUser.shownWith(u"box ").size(), 99U);
    EXPECT_EQ(cardFile("QLBX0099.QLT"), "kept");
    for (const auto& entry : std::filesystem::directory_iterator(card_ / "QUILBOX"))
        EXPECT_EQ(entry.path().extension(), ".QLT");
}

TEST_F(BackupRunTest, UnreadableSourceHasNoEntryAndStays)
{
    write("good", "g");
    mark(u"\\gone");
    mark(u"\\good");
    gOptions.generateLog = 1;
    gOptions.deleteBackedUp = 1;
    backUp();
    EXPECT_EQ(cardFile("BACKUP0001.LOG"), "LOG(09:07:03): INF: Start file backup: \\gone \r\n"
                                          "LOG(09:07:03): ERR: File access file: \\gone \r\n"
                                          "LOG(09:07:03): INF: Start file backup: \\good \r\n"
                                          "LOG(09:07:03): INF: End file backup\\good \r\n");
    EXPECT_EQ(gUser.shownWith(u"step").size(), 2U);
    EXPECT_FALSE(exists("good"));
    restore();
    EXPECT_EQ(read("good"), "g");
    EXPECT_FALSE(exists("gone"));
}

TEST_F(BackupRunTest, FailedWriteIsLoggedAndTheRunGoesToItsEnd)
{
    gOptions.deleteBackedUp = 1;
    backUpUntilLogged("ERR: Backup File write (0000001f)");
    EXPECT_TRUE(exists("a"));
    EXPECT_EQ(gUser.shown.back(), u"close");
}

TEST_F(BackupRunTest, SetThatCannotBeBegunEndsTheRunWithOneLogLine)
{
    const auto expectEnded = [this](const std::string& line) {
        EXPECT_EQ(cardFile("BACKUP0001.LOG"), "LOG(09:07:03): " + line + " \r\n");
        EXPECT_EQ(cardFile("QLBX0001.QDT"), "");
        EXPECT_EQ(gUser.shownWith(u"message").size(), 0U);
        EXPECT_EQ(gUser.shown.back(), u"close");
    };
    backUpUntilLogged("ERR: Backup List Write(0000001f)");
    expectEnded("ERR: Backup List Write(0000001f)");

    std::filesystem::remove_all(card_ / "QUILBOX");
    std::filesystem::create_directories(card_ / "QUILBOX" / "QLBX0001.QDT");
    gUser.shown.clear();
    mount();
    backUp();
    expectEnded("ERR: Backup File create(00000005)");
    EXPECT_TRUE(std::filesystem::exists(card_ / "QUILBOX" / "QLBX0001.QLT"));
    EXPECT_EQ(cardFile("QLBX0001.QLT"), "");
}

TEST_F(BackupRunTest, FullCardKeepsTheSourcesAndTheRunGoesToItsEnd)
{
    write("big", std::string(200'000, 'z'));
    mark(u"\\big");
    gOptions.deleteBackedUp = 1;
    mount(700);
    backUp();
    EXPECT_TRUE(exists("big"));
    EXPECT_EQ(gUser.shown.back(), u"close");
}

TEST_F(BackupRunTest, ChooserLeftWithoutAChoiceMakesNothing)
{
    write("a", "");
    mark(u"\\a");
    gUser.choice.clear();
    gRegistryMarked = 0;
    backUp();
    EXPECT_TRUE(std::filesystem::is_empty(card_));
    EXPECT_EQ(gUser.shownWith(u"open").size(), 0U);
}

TEST_F(BackupRunTest, EveryCardIsOfferedIfTheNamesOfASetFitBehindIt)
{
    // They take 23 characters, and 259 is all.
    const std::u16string fits(235, u'f');
    for (const std::u16string& name :
         {std::u16string(u"folder"), std::u16string(u"Other"), fits, std::u16string(236, u'l')})
        ASSERT_TRUE(platform::file::addMount({.name = name,
                                              .folder = open(card_.c_str(), O_RDONLY | O_DIRECTORY),
                                              .card = name != u"folder",
                                              .capacity = {}}));
    for (const char* file : {"a/b/file", "z/file"})
        write(file, "");
    mark(u"\\z\\file");
    gUser.choice.clear();
    backUp();
    const std::u16string choices = gUser.shown.at(0);
    for (const std::u16string& card : {std::u16string(u"Card"), std::u16string(u"Other"), fits})
        EXPECT_NE(choices.find(u"|\\" + card + u"|"), std::u16string::npos) << card.size();
    EXPECT_TRUE(choices.ends_with(u"|Main device"));
    EXPECT_EQ(std::count(choices.begin(), choices.end(), u'|'), 4);
}

TEST_F(BackupRunTest, MainDeviceHoldsItsSetInTheRoot)
{
    write("a", "content");
    mark(u"\\a");
    gUser.choice = u"Main device";
    backUp();
    EXPECT_EQ(read("QUILBOX/QLBX0001.QDT").substr(0, 5), "QBXPK");
}

TEST_F(BackupRunTest, MoreThanAThousandItemsLeaveTheBarStill)
{
    for (int i = 0; i < 1001; i++)
        mark(u"\\missing");
    backUp();
    EXPECT_EQ(gUser.shownWith(u"open "), Lines{u"Backuping Files|Backuping Files|1000|0"});
    EXPECT_EQ(gUser.shownWith(u"step").size(), 1001U);
}

TEST_F(BackupRunTest, LogLineIsCutAtAWholeCharacterAndKeepsItsEnd)
{
    const std::u16string name = u"\\" + std::u16string(100, u'\u20AC');  // three bytes each in the log
    mark(name);
    gOptions.generateLog = 1;
    backUp();
    const std::string log = cardFile("BACKUP0001.LOG");
    const std::string line = log.substr(0, log.find('\n') + 1);
    EXPECT_LE(line.size(), 259U);
    EXPECT_TRUE(line.ends_with("\xE2\x82\xAC \r\n")) << line;
}

TEST_F(BackupRunTest, StreamThatAnEarlierRunLeftIsNeverTakenForAnItem)
{
    write("other", "what the killed run was at");
    mark(u"\\other");
    backUp();
    const std::string stream = cardFile("QLBX0001.QDT");
    write("busy", "mine");
    RenewLists();
    mark(u"\\busy");
    const std::ofstream holder(store_ / "busy", std::ios::app);
    for (const auto permissions : {0644, 0444}) {
        std::filesystem::remove(card_ / "QUILBOX" / "BKTMP.000");
        std::ofstream(card_ / "QUILBOX" / "BKTMP.000", std::ios::binary) << stream;
        std::filesystem::permissions(card_ / "QUILBOX" / "BKTMP.000", static_cast<std::filesystem::perms>(permissions));
        gUser.answers = {IDYES};
        backUp();
        EXPECT_EQ(cardFile("QLBX0001.QDT"), "") << permissions;
    }
}

TEST_F(BackupRunTest, LogThatIsOffLeavesAnEarlierOne)
{
    write("a", "");
    mark(u"\\a");
    std::filesystem::create_directories(card_ / "QUILBOX");
    std::ofstream(card_ / "QUILBOX" / "BACKUP0001.LOG") << "old";
    backUp();
    EXPECT_EQ(cardFile("BACKUP0001.LOG"), "old");
}
