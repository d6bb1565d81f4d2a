// whole_run_test.cpp - a whole backup and its restore, byte by byte and step by step, and what each failure leaves.
//
// The expected bytes were worked out by hand from docs/format.md. Their streams contain incompressible bytes.

#include "engine_fixture.h"

#include "backup_items.h"
#include "engine/registry_calls.h"
#include "engine/set_paths.h"
#include "kernel/troubles.h"

#include "ce/dialog.h"
#include "ce/outcome.h"

using platform::kernel::Since;
using platform::kernel::Trouble;
using platform::kernel::Troubled;
using platform::kernel::troublesOf;

namespace {

using Names = std::vector<std::string>;

const std::string Registry = "keys and values";

// Sizes of the files a.bin and b.bin. Their streams take 2001 and 999 bytes. The counter shows full thousands. So it
// shows 0 after b.bin alone, and 3 after both files.
constexpr std::size_t SizeOfA = 1973;
constexpr std::size_t SizeOfB = 975;

// Returns a stream: the magic, one block with a single run of literals, and the closing block.
std::string streamOf(const std::string& raw)
{
    const std::size_t count = raw.size();
    const std::size_t zeros = count > 238 ? (count - 19) / 255 : 0;
    const std::string run = count > 238 ? std::string(1 + zeros, 0) + static_cast<char>(count - 18 - 255 * zeros)
                                        : std::string(1, static_cast<char>(17 + count));
    const std::string end("\x11\0\0", 3);
    return "QBXPK" + numberBytes(static_cast<std::uint32_t>(run.size() + count + 3)) + run + raw + end +
           numberBytes(3) + end;
}

// Returns the image of a database with one sort order and without records.
std::string imageOf(const std::string& name, std::uint32_t type)
{
    const std::string text = textBytes(name);
    return numberBytes(static_cast<std::uint32_t>(text.size())) + text + numberBytes(type) +
           std::string("\0\0\1\0", 4) + numberBytes(0x20002) + numberBytes(1);
}

std::string logOf(const Names& messages)
{
    std::string log;
    for (const std::string& message : messages)
        log += "LOG(09:07:03): " + message + " \r\n";
    return log;
}

// Compares without EXPECT_EQ, which would print megabytes of escapes.
void expectBytes(const std::string& found, const std::string& wanted)
{
    const auto offset = std::mismatch(found.begin(), found.end(), wanted.begin(), wanted.end()).first - found.begin();
    EXPECT_TRUE(found == wanted) << "differs at " << offset << ", has " << found.size() << " bytes, should have "
                                 << wanted.size();
}

Names namesIn(const std::filesystem::path& folder)
{
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// Replaces the platform's two calls for the registry. The test chooses whether the call that copies the registry writes
// a file, and which result it returns.
struct {
    bool writes;
    BOOL result;
    std::filesystem::path root;
} gRegistry;

BOOL copyRegistry(const WCHAR* path)
{
    gUser.shown.push_back(u"registry to " + std::u16string(path));
    if (gUser.seesMessage)
        gUser.seesMessage(path);
    if (gRegistry.writes)
        std::ofstream(gRegistry.root / path) << Registry;
    return gRegistry.result;
}

BOOL takeRegistry(const WCHAR* path)
{
    const HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    std::string content(100, 0);
    DWORD bytes = 0;
    ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &bytes, nullptr);
    CloseHandle(file);
    content.resize(bytes);
    gUser.shown.push_back(u"registry from " + std::u16string(path) + u"|" +
                          std::u16string(content.begin(), content.end()));
    return FALSE;
}

class WholeRunTest : public EngineTest {
protected:
    WholeRunTest()
    {
        openStore();
        gRegistry = {true, TRUE, root()};
        gRegCopyFile = copyRegistry;
        gRegRestoreFile = takeRegistry;
        gOptions.generateLog = 1;
        std::filesystem::create_directories(set_);
    }
    ~WholeRunTest() override { gRegCopyFile = gRegRestoreFile = nullptr; }

    // A run whose files are open already.
    struct OpenRun : BackupRun {
        BackupLog lines;

        OpenRun(DWORD listAccess, DWORD dataAccess) : lines(u"\\Card\\QUILBOX\\log")
        {
            const auto opened = [](const WCHAR* path, DWORD access) {
                return open(path, access, access == GENERIC_WRITE ? CREATE_ALWAYS : OPEN_EXISTING);
            };
            listFile = opened(u"\\Card\\QUILBOX\\list", listAccess);
            dataFile = opened(u"\\Card\\QUILBOX\\data", dataAccess);
            log = &lines;
            FormatTemporaryPath(temporaryPath, u"\\Card");
        }
        void close()
        {
            SetCursor(nullptr);  // BackUpItems leaves the wait cursor set until the end of the run
            CloseHandle(listFile);
            CloseHandle(dataFile);
            lines.Close();
        }
    };

    // Returns the names in the folder that can be opened for reading and writing, because no open handle prevents it.
    static Names namesThatOpen(const std::filesystem::path& folder, const std::u16string& path)
    {
        Names names = namesIn(folder);
        std::erase_if(names, [&](const std::string& name) {
            return openError(path + std::u16string(name.begin(), name.end()), GENERIC_READ | GENERIC_WRITE,
                             OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_WRITE) != 0;
        });
        return names;
    }

    void markAll()
    {
        write("a.bin", patternBytes(SizeOfA));
        write("b.bin", patternBytes(SizeOfB));
        mark(u"\\b.bin");
        mark(u"\\a.bin");
        for (const WCHAR* name : {u"E", u"D"}) {
            makeDatabase(name, 7);
            markDatabase(name);
        }
        gRegistryMarked = 1;
    }
};

}  // namespace

TEST_F(WholeRunTest, BackupHasTheFormatsAndTheOrderAndReplacesAnOldSet)
{
    markAll();
    for (const char* name : {"QLBX0001.QLT", "QLBX0001.QDT", "QLBX0001.SUM", "BACKUP0001.LOG"})
        writeOnCard(name, std::string(9000, 'o'));
    gUser.comment = u"mine";
    gUser.answers = {true};
    gUser.notesAll = true;
    const Names set = {"BACKUP0001.LOG", "QLBX0001.QDT", "QLBX0001.QLT"};
    gUser.seesMessage = [&](const std::u16string&) {
        EXPECT_EQ(namesThatOpen(set_, u"\\Card\\QUILBOX\\"), Names{}) << "a run shares no file";
        EXPECT_EQ(namesIn(set_), set) << "temporary files are deleted before the next item begins";
        EXPECT_EQ(namesIn(root()), (Names{"a.bin", "b.bin"}));
    };
    EXPECT_EQ(RunBackup(BackupSelectedItems), 0U);
    EXPECT_EQ(namesThatOpen(set_, u"\\Card\\QUILBOX\\"), set);
    EXPECT_EQ(namesIn(set_), set);
    EXPECT_EQ(gUser.transcript(),
              "dialog backup 2; choose Select your storage|\\Card|Main device; "
              "open Backuping Files|Backuping Files|1000|500; wait; "
              "no wait; ask override \\Card\\QUILBOX\\QLBX0001.QLT; wait; "
              "message File: \\b.bin; count Backuped: 0; step; "
              "message File: \\a.bin; count Backuped: 1; count Backuped: 2; count Backuped: 3; step; no wait; close; "
              "open Databases |Databases |1000|500; wait; "
              "message Database: E; count Backuped: 3; step; "
              "message Database: D; count Backuped: 3; step; "
              "registry to TMVRegFile.QBR; no wait; close");
    EXPECT_EQ(readOnCard("BACKUP0001.LOG"),
              logOf({"INF: Start file backup: \\b.bin", "INF: End file backup\\b.bin",
                     "INF: Start file backup: \\a.bin", "INF: End file backup\\a.bin", "INF: Start Database backup: E",
                     "INF: End Database backup: E", "INF: Start Database backup: D", "INF: End Database backup: D",
                     "INF: Start registry backup", "INF: End registry backup"}));
    expectBytes(readOnCard("QLBX0001.QDT"), streamOf(patternBytes(SizeOfB)) + streamOf(patternBytes(SizeOfA)) +
                                                streamOf(imageOf("E", 7)) + streamOf(imageOf("D", 7)) +
                                                streamOf(Registry));
    // The comment has 43 characters of the program, 4 of the user, and the terminator. The registry's entry repeats the
    // name of the previous entry.
    expectBytes(readOnCard("QLBX0001.QLT"),
                numberBytes(48) + textBytes("Backup date:05/03/2000 (09:07)\r\nComments:\r\nmine") +
                    entryBytes(1, "\\b.bin", 0, 999) + entryBytes(1, "\\a.bin", 999, 3000) +
                    entryBytes(2, "E", 3000, 3044) + entryBytes(2, "D", 3044, 3088) + entryBytes(3, "D", 3088, 3123));
    EXPECT_EQ(namesIn(root()), (Names{"a.bin", "b.bin"}));
    EXPECT_EQ(gFileList->Count() + gDatabaseList->Count() + gRegistryMarked, 5U) << "the marks stay";
}

TEST_F(WholeRunTest, RestoreHasItsOrderAndThePolicyAppliesToFilesOnly)
{
    markAll();
    RunBackup(BackupSelectedItems);
    write("b.bin", "another");
    removeAll("a.bin");
    for (const WCHAR* name : {u"E", u"D"}) {
        CEOID oid = 0;
        CloseHandle(CeOpenDatabase(&oid, name, 0, 0, nullptr));
        CeDeleteDatabase(oid);
        makeDatabase(name, 9);
    }
    gOptions.restoreMode = RestoreModeAsk;
    gRegistryMarked = 0;
    gUser.shown.clear();
    gUser.answers = {false, true, false};
    gUser.notesAll = true;
    gUser.seesMessage = [this](const std::u16string&) {
        for (const std::string& name : namesIn(root()))
            EXPECT_TRUE(name.ends_with(".bin")) << name << " still exists when the next item begins";
    };
    restore();
    EXPECT_EQ(hostCallsOf([] { EXPECT_TRUE(FlushChangedVolumes()); }), 0U) << "all of it is on the disk already";
    EXPECT_EQ(gUser.transcript(), "choose Select backup file|\\Card\\QUILBOX\\QLBX0001.QLT; "
                                  "dialog restore 1|\\Card\\QUILBOX\\QLBX0001.QLT; "
                                  "open Restoring Files|Restoring Files|1000|500; wait; "
                                  "message File: \\b.bin; no wait; ask replace \\b.bin; wait; step; "
                                  "message File: \\a.bin; no wait; wait; step; "
                                  "count Restored: 0 ; count Restored: 1 ; count Restored: 2 ; step; no wait; close; "
                                  "open Restoring Database(s)|Restoring Database(s)|1000|500; wait; "
                                  "message Database: E; step; count Restored: 2 ; "
                                  "no wait; ask replace database E; wait; step; "
                                  "message Database: D; step; count Restored: 2 ; "
                                  "no wait; ask replace database D; wait; step; "
                                  "message Registry; step; registry from \\BKREG.TMP|keys and values; no wait; "
                                  "registry restored; close");
    expectBytes(read("a.bin"), patternBytes(SizeOfA));
    expectBytes(read("b.bin"), "another");
    EXPECT_EQ(typeOfDatabase(u"E"), 7U);
    EXPECT_EQ(typeOfDatabase(u"D"), 9U);
    EXPECT_EQ(namesIn(root()), (Names{"a.bin", "b.bin"}));
    EXPECT_EQ(namesThatOpen(root(), u"\\"), namesIn(root()));
    EXPECT_EQ(namesThatOpen(set_, u"\\Card\\QUILBOX\\"), namesIn(set_));
    EXPECT_EQ(gFileList->Count() + gDatabaseList->Count() + gRegistryMarked, 0U);
}

TEST_F(WholeRunTest, RegistryAloneIsBackedUpWithoutAWindowAndRestoredWithItsMarkUnchanged)
{
    gRegistryMarked = 1;
    gUser.choice = u"Main device";
    backUp();
    EXPECT_EQ(gUser.shownWith(u"open").size() + gUser.shownWith(u"close").size(), 0U);
    EXPECT_EQ(read("QUILBOX/BACKUP0001.LOG"), logOf({"INF: Start registry backup", "INF: End registry backup"}));
    const std::string list = read("QUILBOX/QLBX0001.QLT");
    EXPECT_TRUE(list.ends_with(entryBytes(3, "", 0, 35)));
    gUser.choice = u"\\QUILBOX\\QLBX0001.QLT";
    for (const DWORD mark : {0U, 1U}) {
        for (const bool inSet : {true, false}) {
            write("QUILBOX/QLBX0001.QLT", inSet ? list : list.substr(0, list.size() - entryBytes(3, "", 0, 0).size()));
            write("BKREG.TMP", "in the way");
            gRegistryMarked = mark;
            gUser.shown.clear();
            RunRestore(RestoreFull);
            EXPECT_EQ(gUser.shown.back(), inSet ? u"registry restored" : u"box Info|No Item to restore !|0");
            EXPECT_EQ(gUser.shownWith(u"registry from ").size(), inSet ? 1U : 0U);
            EXPECT_EQ(gUser.shownWith(u"registry from \\BKREG.TMP|keys and values").size(), inSet ? 1U : 0U);
            EXPECT_EQ(exists("BKREG.TMP"), !inSet);
            EXPECT_EQ(gRegistryMarked, mark);
        }
    }
    write("QUILBOX/QLBX0001.QLT", list);
    gRegRestoreFile = nullptr;
    RunRestore(RestoreFull);
    EXPECT_EQ(gUser.shown.back(), u"registry restored");
    std::filesystem::create_directories(root() / "BK000.TMP");
    gUser.shown.clear();
    RunRestore(RestoreFull);
    EXPECT_EQ(gUser.shown.back(), u"dialog restore 1|\\QUILBOX\\QLBX0001.QLT")
        << "a restore that wasn't tried isn't reported";
}

TEST_F(WholeRunTest, FailedItemIsLoggedAndHasNoEntryUnlessAPartOfTheRegistryWasWritten)
{
    struct Case {
        const char* name;
        std::function<void()> prepare;
        Names log;
        std::string entries;
        const char* kept = "own";  // a file of the user, in some cases with a name that the program uses
    };
    const std::string users = "the user's";
    const Names noDatabase = {"INF: Start Database backup: N", "ERR: Database backup: N", "ERR: Database backup: N"};
    const Names noRegistry = {"INF: Start registry backup", "ERR: registry backup", "ERR: registry backup"};
    const auto failRegistry = [](bool writes) {
        gRegistryMarked = 1;
        gRegistry.writes = writes;
        gRegistry.result = FALSE;
    };
    const Case cases[] = {
        {"file", [] { mark(u"\\N"); }, {"INF: Start file backup: \\N", "ERR: File access file: \\N"}, ""},
        {"database", [] { markDatabase(u"N"); }, noDatabase, ""},
        {"database, its image's name taken", [] { markDatabase(u"N"); }, noDatabase, "", "N.CDB"},
        {"registry", [&] { failRegistry(false); }, noRegistry, ""},
        {"registry, its file's name taken", [&] { failRegistry(false); }, noRegistry, "", "TMVRegFile.QBR"},
        {"part of the registry",
         [&] { failRegistry(true); },
         {"INF: Start registry backup", "ERR: registry backup", "INF: End registry backup"},
         entryBytes(3, "", 0, 35)},
        {"no call for the registry",
         [] {
             gRegistryMarked = 1;
             gRegCopyFile = nullptr;
         },
         noRegistry, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove_all(set_);
        RenewLists();
        gRegistryMarked = 0;
        write(c.kept, users);
        c.prepare();
        backUp();
        EXPECT_EQ(readOnCard("BACKUP0001.LOG"), logOf(c.log));
        expectBytes(readOnCard("QLBX0001.QLT"),
                    numberBytes(44) + textBytes("Backup date:05/03/2000 (09:07)\r\nComments:\r\n") + c.entries);
        EXPECT_EQ(namesIn(root()), Names{c.kept});
        EXPECT_EQ(read(c.kept), users);
        removeAll(c.kept);
    }
}

TEST_F(WholeRunTest, UsersFileIsReportedIfAFailedCopyOfTheRegistryHasDeletedIt)
{
    gRegistryMarked = 1;
    gRegCopyFile = [](const WCHAR* path) { return static_cast<BOOL>(DeleteFileW(path) && false); };
    for (const bool isThere : {false, true}) {
        if (isThere)
            write("TMVRegFile.QBR", "the user's");
        BeginJob();
        backUp();
        EXPECT_EQ(troublesOf(Trouble::Replacing, Troubled::File, Since::Job).size(), isThere ? 1U : 0U);
    }
}

// The test sets the number of stored bytes so high that only the stream of one byte fits below 4 GiB.
TEST_F(WholeRunTest, ItemThatWouldEndBeyond4GiBIsLeftOutAndOneThatJustFitsIsStored)
{
    const std::string stream = streamOf("1");
    write("two", "12");
    write("one", "1");
    write("empty", "");
    for (const WCHAR* path : {u"\\two", u"\\one", u"\\empty"})
        mark(path);
    OpenRun run(GENERIC_WRITE, GENERIC_WRITE);
    run.dataBytes = 0xFFFFFFFF - static_cast<DWORD>(stream.size());
    BackUpItems(run);

    // A stream of a little more than 4 GiB.
    writeOnCard("BKTMP.000", "");
    run.dataBytes = 0;
    run.packed.made = TRUE;
    run.packed.bytes = (std::uint64_t{1} << 32) + 12;
    EXPECT_EQ(OpenTemporaryStream(run), INVALID_HANDLE_VALUE);
    run.close();
    const char* const full = "ERR: Backup File write (00000070)";
    EXPECT_EQ(readOnCard("log"), logOf({"INF: Start file backup: \\two", full, "INF: Start file backup: \\one",
                                        "INF: End file backup\\one", "INF: Start file backup: \\empty", full, full}));
    expectBytes(readOnCard("list"), entryBytes(1, "\\one", 0xFFFFFFEA, 0xFFFFFFFF));
    expectBytes(readOnCard("data"), stream);
    EXPECT_EQ(namesIn(set_), (Names{"data", "list", "log"}));
}

// The test opens the list or the data for reading only, so that each write to it fails.
TEST_F(WholeRunTest, EachFailedWriteHasItsLineAndKeepsTheSource)
{
    writeOnCard("list", "");
    writeOnCard("data", "");
    write("a.bin", patternBytes(SizeOfA));
    mark(u"\\a.bin");
    gOptions.deleteBackedUp = 1;
    // The list gets 5 writes: kind, flag, length, name and start of the entry. The data gets 8: 7 pieces of 260 bytes
    // and one of 181.
    for (const auto& [list, data, writes] :
         {std::tuple{GENERIC_READ, GENERIC_WRITE, 5}, {GENERIC_WRITE, GENERIC_READ, 8}}) {
        OpenRun run(list, data);
        BackUpItems(run);
        run.close();
        Names log(static_cast<std::size_t>(writes) + 2, "ERR: Backup File write (00000005)");
        log.front() = "INF: Start file backup: \\a.bin";
        log.back() = "INF: End file backup\\a.bin";
        EXPECT_EQ(readOnCard("log"), logOf(log));
        EXPECT_TRUE(exists("a.bin"));
    }
    expectBytes(readOnCard("list"), entryBytes(1, "\\a.bin", 0, 0));
}
