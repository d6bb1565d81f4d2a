// restore_run_test.cpp - a restore's questions, its policies, and what a set from anywhere can't do.

#include "engine_fixture.h"

#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/restore_run.h"
#include "kernel/troubles.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/outcome.h"

#include <algorithm>
#include <fstream>

namespace {

using Lines = std::vector<std::u16string>;

class RestoreRunTest : public EngineTest {
protected:
    // A set of these files, and then other content in their places.
    void makeSet()
    {
        write("a", "old a");
        write("folder/b", "old b");
        mark(u"\\a");
        mark(u"\\folder\\b");
        backUp();
        write("a", "new a");
        removeAll("folder");
        gUser.shown.clear();
    }
};

// An empty comment: its length in characters, its terminator.
const std::string Head = {1, 0, 0, 0, 0, 0};
// Stream of the five bytes "hello": magic, a block of one literal run with LZO's end mark, the closing block.
const std::string Hello =
    std::string("QBXPK") + std::string("\x09\0\0\0\x16hello\x11\0\0", 13) + std::string("\x03\0\0\0\x11\0\0", 7);

}  // namespace

TEST_F(RestoreRunTest, PolicyDecidesAboutWhatExistsOnly)
{
    struct Case {
        WORD mode;
        int answer;
        const char* a;
        std::size_t questions;
    };
    for (const Case& c :
         {Case{RestoreModeReplace, IDNO, "old a", 0}, Case{RestoreModeSkip, IDYES, "new a", 0},
          Case{RestoreModeAsk, IDYES, "old a", 1}, Case{RestoreModeAsk, IDNO, "new a", 1}, Case{7, IDNO, "old a", 0}}) {
        SCOPED_TRACE(c.mode);
        std::filesystem::remove_all(card_ / "QUILBOX");
        RenewLists();
        makeSet();
        gOptions.restoreMode = c.mode;
        gUser.answers = {c.answer};
        restore();
        EXPECT_EQ(read("a"), c.a);
        EXPECT_EQ(read("folder/b"), "old b");
        const auto boxes = gUser.shownWith(u"box ");
        EXPECT_EQ(boxes.size(), c.questions);
        if (c.questions == 1) {
            EXPECT_EQ(boxes[0], u"Warning|File:\\a exists replace ?|308");
        }
    }
}

TEST_F(RestoreRunTest, NoSetNoChoiceAndNoItemsAreToldAndKeepTheMarks)
{
    mark(u"\\marked");
    EXPECT_EQ(RunRestore(RestoreFull), 0U);
    EXPECT_EQ(gUser.shown, Lines{u"box (none)|No Backup File found|0"});
    EXPECT_EQ(gFileList->Count(), 1U);

    std::filesystem::create_directories(card_ / "QUILBOX");
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QLT") << Head;
    std::filesystem::create_directories(card_ / "QUILBOX" / "folder.QLT");
    for (const WCHAR* choice : {u"", u"\\Card\\QUILBOX\\folder.QLT"}) {
        gUser.choice = choice;
        gUser.shown.clear();
        EXPECT_EQ(RunRestore(RestoreFull), 1U);
        EXPECT_EQ(gFileList->Count(), 1U);
        EXPECT_EQ(gUser.shown.size(), 1U) << "the choice and nothing else";
    }

    gUser.shown.clear();
    restore();
    EXPECT_EQ(gUser.shown.back(), u"box Info|No Item to restore !|0");
    EXPECT_EQ(gFileList->Count(), 0U);
}

TEST_F(RestoreRunTest, EverySetIsOfferedByTheEndOfItsName)
{
    std::filesystem::create_directories(card_ / "QUILBOX" / "folderQLT");
    std::filesystem::create_directories(store_ / ".hidden");
    for (const char* name : {"QLBX0001.QLT", "xQLT", "QLT", "lower.qlt", "QL"})
        std::ofstream(card_ / "QUILBOX" / name) << Head;
    std::ofstream(store_ / ".hidden" / "no.QLT") << Head;
    std::ofstream(store_ / ".seen.QLT") << Head;
    for (int number = 2; number <= 99; number++)
        std::ofstream(card_ / "QUILBOX" / ("QLBX00" + std::to_string(number) + ".QLT")) << Head;
    gUser.choice.clear();
    RunRestore(RestoreFull);
    const std::u16string choices = gUser.shown.at(0);
    EXPECT_EQ(std::count(choices.begin(), choices.end(), u'|'), 99 + 4) << "99 sets, one folder, three odd names";
    EXPECT_EQ(choices.find(u"lower"), std::u16string::npos);
    EXPECT_EQ(choices.find(u"hidden"), std::u16string::npos);
}

TEST_F(RestoreRunTest, CraftedNamesStayInsideTheDevice)
{
    std::filesystem::create_directories(card_ / "QUILBOX");
    std::filesystem::create_directories(base_ / "outside");
    std::filesystem::create_directory_symlink(base_ / "outside", store_ / "link");
    const auto size = static_cast<std::uint32_t>(Hello.size());
    std::string list = Head;
    for (const char* name :
         {"\\..\\escaped", "\\link\\escaped", "..\\escaped", "\\a\\..\\..\\escaped", "\\", "", "\\con*", "\\good"})
        list += entryBytes(1, name, 0, size);
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QLT", std::ios::binary) << list;
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QDT", std::ios::binary) << Hello;
    restore();
    EXPECT_EQ(read("good"), "hello");
    for (const auto& found : std::filesystem::recursive_directory_iterator(base_))
        EXPECT_EQ(found.path().filename().string().find("escaped"), std::string::npos) << found.path();
}

TEST_F(RestoreRunTest, OffsetsThatMeanNothingRestoreNothing)
{
    std::filesystem::create_directories(card_ / "QUILBOX");
    const auto size = static_cast<std::uint32_t>(Hello.size());
    const std::string list = Head + entryBytes(1, "\\behind", 5000, 6000) + entryBytes(1, "\\swapped", size, 0) +
                             entryBytes(1, "\\empty", 3, 3) + entryBytes(1, "\\huge", 1, 0xFFFFFFFF) +
                             entryBytes(1, "\\whole", 0, 0xFFFFFFFF);
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QLT", std::ios::binary) << list;
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QDT", std::ios::binary) << Hello;
    restore();
    for (const char* name : {"behind", "swapped", "empty", "huge"})
        EXPECT_FALSE(exists(name)) << name;
    EXPECT_EQ(read("whole"), "hello");
}

TEST_F(RestoreRunTest, DamagedDatabaseItemCostsNoFileOfItsImagesName)
{
    write("X.CDB", "the user's own");
    std::filesystem::create_directories(card_ / "QUILBOX");
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QLT", std::ios::binary) << Head + entryBytes(2, "X", 3, 9);
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QDT", std::ios::binary) << Hello;
    restore();
    EXPECT_EQ(read("X.CDB"), "the user's own");
    EXPECT_FALSE(exists("BK000.TMP"));
}

TEST_F(RestoreRunTest, NamesThatDifferByCaseAloneStayTwo)
{
    write("Same", "upper");
    write("same", "lower");
    mark(u"\\Same");
    mark(u"\\same");
    backUp();
    removeAll("Same");
    removeAll("same");
    restore();
    EXPECT_EQ(read("Same"), "upper");
    EXPECT_EQ(read("same"), "lower");
}

TEST_F(RestoreRunTest, MissingDataFileRestoresNothingAndClearsTheLists)
{
    makeSet();
    std::filesystem::remove(card_ / "QUILBOX" / "QLBX0001.QDT");
    restore();
    EXPECT_EQ(read("a"), "new a");
    EXPECT_EQ(gFileList->Count(), 0U);
    EXPECT_EQ(gUser.shownWith(u"open").size(), 0U);
}

// The list says nothing of what it lacks, so each sign of damage counts.
TEST_F(RestoreRunTest, DamagedListIsReported)
{
    using namespace platform::kernel;
    const std::string a = entryBytes(1, "\\a", 0, 25), registry = entryBytes(3, "", 25, 50);
    const std::string otherKind = char{5} + a.substr(1);
    std::string nameCut = a;
    nameCut[8] = 0;  // the second character of the name
    std::filesystem::create_directories(card_ / "QUILBOX");
    std::ofstream(card_ / "QUILBOX" / "QLBX0001.QDT", std::ios::binary) << Hello << Hello;
    ASSERT_EQ(Hello.size(), 25U);
    for (const auto& [list, damaged] : {std::pair(a + registry, false),
                                        {otherKind + registry, true},
                                        {a, true},
                                        {nameCut + registry, true},
                                        {a + registry + registry, true}}) {
        std::ofstream(card_ / "QUILBOX" / "QLBX0001.QLT", std::ios::binary) << Head << list;
        BeginJob();
        restore();
        const auto reported = troublesOf(Trouble::Restoring, Troubled::File, Since::Job);
        EXPECT_EQ(std::ranges::any_of(reported, [](const auto& each) { return each.name.ends_with(u".QLT"); }),
                  damaged);
    }
}
