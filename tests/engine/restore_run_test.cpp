// restore_run_test.cpp - the questions and policies of a restore, and what a hostile set can't do.

#include "engine_fixture.h"

#include "kernel/job.h"
#include "kernel/run_progress.h"

#include "ce/dialog.h"
#include "ce/outcome.h"
#include "ce/text.h"

#include <algorithm>

namespace {

using Lines = std::vector<std::u16string>;

// The head of a list with an empty comment: its length in characters, then its terminator.
const std::string Head = {1, 0, 0, 0, 0, 0};
// The stream of the five bytes "hello": the magic, a block with one literal run and LZO's end mark, and the closing
// block.
const std::string Hello =
    std::string("QBXPK") + std::string("\x09\0\0\0\x16hello\x11\0\0", 13) + std::string("\x03\0\0\0\x11\0\0", 7);
constexpr std::uint32_t HelloBytes = 25;

class RestoreRunTest : public EngineTest {
protected:
    // Writes set 1 of the card. Its data file has two streams.
    void writeSet(const std::string& entries) const
    {
        writeOnCard("QLBX0001.QLT", Head + entries);
        writeOnCard("QLBX0001.QDT", Hello + Hello);
    }
};

}  // namespace

TEST_F(RestoreRunTest, PolicyAppliesToExistingFilesOnly)
{
    struct Case {
        WORD mode;
        bool answer;
        const char* a;
        const char* b;
        Lines questions;
    };
    // The set contains \folder\b twice. Its first entry makes the folder when it is restored.
    std::string again = Hello;
    again.replace(again.find("hello"), 5, "again");
    writeSet(entryBytes(1, "\\a", 0, HelloBytes) + entryBytes(1, "\\folder\\b", 0, HelloBytes) +
             entryBytes(1, "\\folder\\b", HelloBytes, 2 * HelloBytes));
    writeOnCard("QLBX0001.QDT", Hello + again);
    const Lines both = {u"replace \\a", u"replace \\folder\\b"};
    for (const Case& c :
         {Case{RestoreModeReplace, false, "hello", "again", {}}, Case{RestoreModeSkip, true, "new", "hello", {}},
          Case{RestoreModeAsk, true, "hello", "again", both}, Case{RestoreModeAsk, false, "new", "hello", both},
          Case{7, false, "hello", "again", {}}}) {
        SCOPED_TRACE(c.mode);
        write("a", "new");
        removeAll("folder");
        gOptions.restoreMode = c.mode;
        gUser.shown.clear();
        gUser.answers = {c.answer, c.answer};
        restore();
        EXPECT_EQ(read("a"), c.a);
        EXPECT_EQ(read("folder/b"), c.b);
        EXPECT_EQ(gUser.shownWith(u"ask "), c.questions);
    }
    std::filesystem::remove(set_ / "QLBX0001.QDT");
    write("a", "new");
    gUser.shown.clear();
    restore();
    EXPECT_EQ(read("a"), "new");
    EXPECT_EQ(gFileList->Count(), 0U);
    EXPECT_EQ(gUser.shownWith(u"open").size(), 0U) << "without a data file no restore begins";
}

TEST_F(RestoreRunTest, FileThatExistsAfterAMissingOneIsAskedAboutAndReportedAsUsual)
{
    std::string entries;
    for (const char* name : {"a", "old", "b", "c", "folder", "d", "con*", "e"})
        entries += entryBytes(1, std::string("\\") + name, 0, HelloBytes);
    entries += entryBytes(1, "\\damaged", 1, HelloBytes);
    writeSet(entries + entryBytes(1, "\\f", 0, HelloBytes) + entryBytes(1, "\\old", 0, HelloBytes));
    std::filesystem::create_directory(root() / "folder");
    write("old", "new");
    write("damaged", "new");
    gOptions.restoreMode = RestoreModeAsk;
    gUser.answers = {false, true, false, true, false};
    restore();
    const std::string restored = "step; step; ", declined = "step; ";
    const std::string transcript = gUser.transcript();
    EXPECT_NE(transcript.find("message File: \\a; " + restored + "message File: \\old; ask replace \\old; " + declined +
                              "message File: \\b; " + restored + "message File: \\c; " + restored +
                              "message File: \\folder; ask replace \\folder; " + restored + "message File: \\d; " +
                              restored + "message File: \\con*; ask replace \\con*; " + declined +
                              "message File: \\e; " + restored + "message File: \\damaged; ask replace \\damaged; " +
                              restored + "message File: \\f; " + restored + "message File: \\old; ask replace \\old; " +
                              declined + "close"),
              std::string::npos)
        << transcript;
    for (const char* name : {"a", "b", "c", "d", "e", "f"})
        EXPECT_EQ(read(name), "hello") << name;
    EXPECT_EQ(read("old"), "new");
    EXPECT_EQ(read("damaged"), "new");
    EXPECT_FALSE(exists("BK000.TMP"));
    EXPECT_EQ(platform::kernel::runProgress().made[0], 6U);
}

TEST_F(RestoreRunTest, MissingOrEmptySetIsReportedAndOnlyALoadedSetClearsTheMarks)
{
    mark(u"\\marked");
    EXPECT_EQ(RunRestore(RestoreFull), 0U);
    EXPECT_EQ(gUser.shown, Lines{u"box (none)|No Backup File found|0"});
    EXPECT_EQ(gFileList->Count(), 1U);

    writeSet("");
    std::filesystem::create_directories(set_ / "folder.QLT");
    for (const WCHAR* choice : {u"", u"\\Card\\QUILBOX\\folder.QLT"}) {
        gUser.choice = choice;
        gUser.shown.clear();
        EXPECT_EQ(RunRestore(RestoreFull), 1U);
        EXPECT_EQ(gFileList->Count(), 1U);
        EXPECT_EQ(gUser.shown.size(), 1U) << "only the choice";
    }

    gUser.shown.clear();
    restore();
    EXPECT_EQ(gUser.shown.back(), u"box Info|No Item to restore !|0");
    EXPECT_EQ(gFileList->Count(), 0U);
}

TEST_F(RestoreRunTest, EveryNameThatEndsInQltIsOfferedAsASet)
{
    std::filesystem::create_directories(set_ / "folderQLT");
    for (const char* name : {"xQLT", "QLT", "lower.qlt", "QL"})
        writeOnCard(name, Head);
    for (int number = 10; number <= 99; number++)
        writeOnCard("QLBX00" + std::to_string(number) + ".QLT", Head);
    write(".hidden/no.QLT", Head);
    write(".seen.QLT", Head);
    gUser.choice.clear();
    RunRestore(RestoreFull);
    const std::u16string choices = gUser.shown.at(0);
    EXPECT_EQ(std::count(choices.begin(), choices.end(), u'|'), 90 + 4) << "90 sets, one folder, three other names";
    EXPECT_EQ(choices.find(u"lower"), std::u16string::npos);
    EXPECT_EQ(choices.find(u"hidden"), std::u16string::npos);
}

TEST_F(RestoreRunTest, ChoicesComeWithFreeSpaceAndWithDateAndComment)
{
    mount(5'000'000);
    write("a", "a");
    mark(u"\\a");
    CopyText(gComment, u"two\r\nlines");
    RunBackup(BackupListedItems);
    ASSERT_EQ(gUser.details.size(), 2U);  // the card and the main device
    EXPECT_EQ(gUser.details[0], u"5000 KB free");
    EXPECT_TRUE(gUser.details[1].ends_with(u"B free"));

    std::filesystem::create_directories(set_ / "folderQLT");
    writeOnCard("cutQLT", std::string({9, 0}));
    gUser.details.clear();
    gUser.choice.clear();
    RunRestore(RestoreFull);
    std::ranges::sort(gUser.details);
    EXPECT_EQ(gUser.details, (Lines{u"", u"", u"05/03/2000 (09:07) two lines"}));
    const auto troubles =
        platform::kernel::troublesOf(platform::kernel::Trouble::Reading, platform::kernel::Troubled::File);
    EXPECT_TRUE(std::ranges::none_of(troubles, [](const auto& each) { return each.name.ends_with(u"folderQLT"); }));
}

TEST_F(RestoreRunTest, CraftedNamesStayInsideTheDeviceAndNamesWithAnotherCaseAreOtherFiles)
{
    std::filesystem::create_directories(outside() / "elsewhere");
    std::filesystem::create_directory_symlink(outside() / "elsewhere", root() / "link");
    std::string entries;
    for (const char* name : {"\\..\\escaped", "\\link\\escaped", "..\\escaped", "\\a\\..\\..\\escaped", "\\", "",
                             "\\con*", "\\good", "\\Good"})
        entries += entryBytes(1, name, 0, HelloBytes);
    writeSet(entries);
    restore();
    EXPECT_EQ(read("good"), "hello");
    EXPECT_EQ(read("Good"), "hello");
    for (const auto& found : std::filesystem::recursive_directory_iterator(outside()))
        EXPECT_EQ(found.path().filename().string().find("escaped"), std::string::npos) << found.path();
}

TEST_F(RestoreRunTest, ItemWithImpossibleOffsetsIsNotRestoredAndAFileNamedLikeItsImageStays)
{
    write("X.CDB", "the user's own");
    writeSet(entryBytes(1, "\\beyond", 5000, 6000) + entryBytes(1, "\\swapped", HelloBytes, 0) +
             entryBytes(1, "\\empty", 3, 3) + entryBytes(1, "\\huge", 1, 0xFFFFFFFF) + entryBytes(2, "X", 3, 9) +
             entryBytes(1, "\\whole", HelloBytes, 0xFFFFFFFF));
    restore();
    for (const char* name : {"beyond", "swapped", "empty", "huge", "BK000.TMP"})
        EXPECT_FALSE(exists(name)) << name;
    EXPECT_EQ(read("whole"), "hello");
    EXPECT_EQ(read("X.CDB"), "the user's own");
}

// A list doesn't contain its number of items, so a restore reports each sign of damage.
TEST_F(RestoreRunTest, DamagedListIsReported)
{
    using namespace platform::kernel;
    const std::string a = entryBytes(1, "\\a", 0, HelloBytes), registry = entryBytes(3, "", HelloBytes, 2 * HelloBytes);
    const std::string otherKind = char{5} + a.substr(1);
    std::string nameCut = a;
    nameCut[8] = 0;  // the second character of the name
    for (const auto& [entries, damaged] : {std::pair(a + registry, false),
                                           {otherKind + registry, true},
                                           {a, true},
                                           {nameCut + registry, true},
                                           {a + registry + registry, true}}) {
        writeSet(entries);
        BeginJob();
        restore();
        const auto reported = troublesOf(Trouble::Restoring, Troubled::File, Since::Job);
        EXPECT_EQ(std::ranges::any_of(reported, [](const auto& each) { return each.name.ends_with(u".QLT"); }),
                  damaged);
    }
}

// The temporary image is in the folder that the name of the database begins with.
TEST_F(RestoreRunTest, DatabaseWhoseNameHasAMissingFolderReplacesNoFile)
{
    using namespace platform::kernel;
    writeSet(entryBytes(2, "sub\\X", 0, HelloBytes));
    writeOnCard("QLBX0001.QDT", Hello);
    BeginJob();
    restore();
    EXPECT_TRUE(troublesOf(Trouble::Replacing, Troubled::File, Since::Job).empty());
}

TEST_F(RestoreRunTest, StoppedRunKeepsWhatItHasDoneAndReportsTheRest)
{
    using namespace platform::kernel;
    const auto stoppedAt = [](const std::u16string& message, const auto& run) {
        gUser.seesMessage = [&](const std::u16string& text) {
            if (text == message)
                stopJob();
        };
        BeginJob();
        run();
        EndJob(nullptr);
        Lines left;
        for (const NamedTrouble& trouble : troublesOf(Trouble::Reaching, Troubled::File, Since::Job))
            left.push_back(trouble.name);
        return left;
    };
    for (const char* name : {"a", "b", "c"}) {
        write(name, name);
        mark(u"\\" + std::u16string(1, static_cast<char16_t>(name[0])));
    }
    EXPECT_EQ(stoppedAt(u"File: \\b", [] { backUp(); }), Lines{u"\\c"});
    EXPECT_EQ(stoppedAt(u"none", [] { backUp(); }), Lines{}) << "a later run isn't stopped";
    EXPECT_EQ(gUser.shownWith(u"ask override").size(), 1U) << "set 1 is complete";

    for (const char* name : {"a", "b", "c"})
        write(name, "new");
    // The stop is requested just before the question about \a.
    gOptions.restoreMode = RestoreModeAsk;
    EXPECT_EQ(stoppedAt(u"File: \\a", [] { restore(); }), (Lines{u"\\a", u"\\b"}));
    gOptions.restoreMode = RestoreModeReplace;
    EXPECT_EQ(stoppedAt(u"File: \\a", [] { restore(); }), Lines{u"\\b"});
    EXPECT_EQ(read("a"), "a");
    EXPECT_EQ(read("b"), "new");
}
