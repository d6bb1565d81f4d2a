// backup_run_test.cpp - the questions, the files and the log of a backup.

#include "engine_fixture.h"
#include "piece_copy.h"

#include "ce/dialog.h"

#include <cerrno>

namespace {

using namespace platform::file;
using Lines = std::vector<std::u16string>;

class BackupRunTest : public EngineTest {
protected:
    // Backs up one file repeatedly until the log contains the line. In the first backup the first host call fails, in
    // the second backup the second call, and so on.
    void backUpUntilLogged(const std::string& line) const
    {
        for (std::uint64_t n = 1; readOnCard("BACKUP0001.LOG").find(line) == std::string::npos; n++) {
            std::filesystem::remove_all(set_);
            mount();
            gUser.shown.clear();
            const FaultPlan plan = {.kind = FaultKind::Fail, .nthCall = n, .error = EIO};
            ASSERT_GE(hostCallsOf(backUp, plan), n) << "no failing call was ever logged";
        }
    }
};

}  // namespace

TEST_F(BackupRunTest, BackupWithNoMarkedItemReportsItAndWritesNothing)
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
    const std::string list = readOnCard("QLBX0001.QLT");
    EXPECT_EQ(list.substr(0, 4), std::string("\x04\x01\0\0", 4)) << "260 with the terminator";
    EXPECT_EQ(list.substr(4 + 2 * 258, 4), std::string("c\0\0\0", 4));
}

TEST_F(BackupRunTest, RefusingToReplaceASetKeepsItAndMovesOnToTheNextNumber)
{
    write("a", "new");
    mark(u"\\a");
    writeOnCard("QLBX0001.QLT", "one");
    writeOnCard("QLBX0003.QLT", "three");
    writeOnCard("BACKUP0002.LOG", "old");
    backUp();
    EXPECT_EQ(gUser.shownWith(u"ask "), Lines{u"override \\Card\\QUILBOX\\QLBX0001.QLT"});
    gUser.shown.clear();
    backUp();
    EXPECT_EQ(gUser.shownWith(u"ask ").size(), 3U);
    EXPECT_EQ(readOnCard("QLBX0001.QLT"), "one");
    EXPECT_EQ(readOnCard("QLBX0003.QLT"), "three");
    EXPECT_EQ(readOnCard("QLBX0002.QLT"), readOnCard("QLBX0004.QLT"));
    EXPECT_FALSE(readOnCard("QLBX0004.QDT").empty());
    EXPECT_EQ(readOnCard("BACKUP0002.LOG"), "old") << "this run writes no log";
}

TEST_F(BackupRunTest, NinetyNineRefusalsChangeNothing)
{
    write("a", "new");
    mark(u"\\a");
    for (int number = 1; number <= 99; number++)
        writeOnCard((number < 10 ? "QLBX000" : "QLBX00") + std::to_string(number) + ".QLT", "kept");
    gOptions.generateLog = 1;
    backUp();
    EXPECT_EQ(gUser.shownWith(u"ask ").size(), 99U);
    EXPECT_EQ(readOnCard("QLBX0099.QLT"), "kept");
    for (const auto& entry : std::filesystem::directory_iterator(set_))
        EXPECT_EQ(entry.path().extension(), ".QLT");
}

TEST_F(BackupRunTest, SetThatCannotBeBegunEndsTheRunWithOneLogLine)
{
    const auto expectEnded = [this](const std::string& line) {
        EXPECT_EQ(readOnCard("BACKUP0001.LOG"), "LOG(09:07:03): " + line);
        EXPECT_EQ(readOnCard("QLBX0001.QDT"), "");
        EXPECT_EQ(gUser.shownWith(u"message").size(), 0U);
        EXPECT_EQ(gUser.shown.back(), u"close");
    };
    write("a", "content");
    mark(u"\\a");
    gOptions.generateLog = 1;
    const std::string listNotWritten = "ERR: Backup List Write(0000001f) \r\n";
    backUpUntilLogged(listNotWritten);
    expectEnded(listNotWritten);

    std::filesystem::remove_all(set_);
    std::filesystem::create_directories(set_ / "QLBX0001.QDT");
    gUser.shown.clear();
    mount();
    backUp();
    expectEnded("ERR: Backup File create(00000005) \r\n");
    EXPECT_TRUE(std::filesystem::exists(set_ / "QLBX0001.QLT"));
    EXPECT_EQ(readOnCard("QLBX0001.QLT"), "");
}

TEST_F(BackupRunTest, EveryCardIsOfferedIfTheNamesOfASetFitAfterItsPath)
{
    // The names of a set take 23 of the 259 characters of a path.
    const std::u16string fits(235, u'f');
    for (const std::u16string& name : {std::u16string(u"folder"), fits, std::u16string(236, u'l')}) {
        const int folder = ::open(card_.c_str(), O_RDONLY | O_DIRECTORY);
        ASSERT_TRUE(addMount({.name = name, .folder = folder, .card = name != u"folder", .capacity = {}}));
    }
    write("a/b/file", "");
    mark(u"\\a\\b\\file");
    gUser.choice.clear();
    backUp();
    ASSERT_EQ(gUser.shown.size(), 1U) << "without a choice no run begins";
    EXPECT_TRUE(gUser.shown[0] == u"choose Select your storage|\\Card|\\" + fits + u"|Main device" ||
                gUser.shown[0] == u"choose Select your storage|\\" + fits + u"|\\Card|Main device");
    EXPECT_TRUE(std::filesystem::is_empty(card_));
}

TEST_F(BackupRunTest, ProgressBarDoesNotMoveForMoreThanAThousandItems)
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
    const std::string log = readOnCard("BACKUP0001.LOG");
    const std::string line = log.substr(0, log.find('\n') + 1);
    EXPECT_LE(line.size(), 259U);
    EXPECT_TRUE(line.ends_with("\xE2\x82\xAC \r\n")) << line;
}

TEST_F(BackupRunTest, StreamThatAnEarlierRunLeftIsNeverTakenForAnItem)
{
    write("other", "what the killed run was at");
    mark(u"\\other");
    backUp();
    const std::string stream = readOnCard("QLBX0001.QDT");
    write("busy", "mine");
    RenewLists();
    mark(u"\\busy");
    const std::ofstream holder(root() / "busy", std::ios::app);
    for (const auto permissions : {0644, 0444}) {
        std::filesystem::remove(set_ / "BKTMP.000");
        writeOnCard("BKTMP.000", stream);
        std::filesystem::permissions(set_ / "BKTMP.000", static_cast<std::filesystem::perms>(permissions));
        gUser.answers = {true};
        backUp();
        EXPECT_EQ(readOnCard("QLBX0001.QDT"), "") << permissions;
    }
}

TEST_F(BackupRunTest, PiecesThatAreWrittenTogetherFailLikeSingleOnes)
{
    using Copied = std::vector<std::pair<DWORD, DWORD>>;
    const std::string bytes = patternBytes(PieceBytes * PiecesAtOnce + 700);
    write("from", bytes);
    const auto copy = [&](std::uint64_t capacity, const auto& passOn) {
        remount();
        addFolder(u"Card", true, capacity);
        (void)DeleteFileW(u"\\Card\\to");
        const HANDLE from = open(u"\\from", GENERIC_READ, OPEN_EXISTING);
        const HANDLE to = open(u"\\Card\\to", GENERIC_WRITE, CREATE_NEW);
        Copied copied;
        int failures = 0;
        passOn(
            from, to, [&] { failures++; }, [&](DWORD read, DWORD written) { copied.emplace_back(read, written); });
        CloseHandle(from);
        CloseHandle(to);
        return std::tuple(copied, failures, hostRead(card_ / "to"));
    };
    for (const std::uint64_t capacity : {0U, 1U, 259U, 260U, 261U, 700U, 8059U, 8060U, 8061U, 8500U, 8759U, 8760U}) {
        SCOPED_TRACE(capacity);
        const auto together = copy(capacity, [](HANDLE from, HANDLE to, const auto& failed, const auto& copied) {
            ItemOutcome item;
            CopyPieces(from, to, ~std::uint64_t{0}, item, failed, copied);
        });
        const auto single = copy(capacity, [&](HANDLE, HANDLE to, const auto& failed, const auto& copied) {
            for (std::size_t at = 0; at < bytes.size(); at += PieceBytes) {
                const std::string piece = bytes.substr(at, PieceBytes);
                const auto written = static_cast<DWORD>(FileTest::write(to, piece));
                if (written != piece.size())
                    failed();
                copied(static_cast<DWORD>(piece.size()), written);
            }
        });
        EXPECT_EQ(together, single);
    }
}
