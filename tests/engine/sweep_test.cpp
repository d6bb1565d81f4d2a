// outcome_sweep_test.cpp - whatever call on the host fails, and however: no source and no content is lost, no file is
// replaced against the policy, and each item that isn't in the set, or isn't restored, or wasn't deleted, is reported.
//
// Each round runs with other errors, so that the normal suite tries every call with some of them.
// QUILLBOX_EVERY_ERROR=1 tries every call with all of them: some 30,000 faults.

#include "engine_fixture.h"

#include "engine/backup_run.h"
#include "engine/options.h"
#include "engine/questions.h"
#include "file/host_faults.h"
#include "kernel/troubles.h"
#include "set/list_file.h"
#include "set/list_reader.h"
#include "set/set_state.h"
#include "set/stream_decoding.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/outcome.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>

using namespace platform::file;
using platform::kernel::Since;
using platform::kernel::Trouble;
using platform::kernel::Troubled;
using platform::kernel::troublesOf;

namespace {

using Contents = std::map<std::string, std::string>;

const Contents Sources = {
    {"a.txt", "The first of the files."},
    {"empty", ""},
    {"noise", "\x91\x03\xe7\x5a\xc4\x18\xfe\x27\xb0\x6d\x99\x42"},
    {"sub/run.txt", std::string(3000, 'x') + "end"},
};

// What stands on the device before a restore.
const Contents Present = {{"a.txt", "Written after the backup."}, {"empty", "Not empty any more."}};

// What the calls that the file layer makes are documented to fail with, less ENOENT: of a file that is there that is a
// lie which nobody can see through. The others of this kind are ENOTDIR of a folder and EEXIST of a file to be made,
// and ELOOP and EXDEV, which name what is no part of the device.
constexpr int Errors[] = {EIO,          ENOSPC,    EACCES, ENOMEM,  EROFS,   EMFILE,   EBADF,  EINVAL,
                          EPERM,        ESTALE,    ENODEV, ENXIO,   EDQUOT,  EFBIG,    ENFILE, EBUSY,
                          EOPNOTSUPP,   EOVERFLOW, EFAULT, ETXTBSY, EAGAIN,  EISDIR,   EMLINK, ENOSYS,
                          ENAMETOOLONG, ESPIPE,    EPIPE,  E2BIG,   ENODATA, ENOTEMPTY};

bool everyError()
{
    return std::getenv("QUILLBOX_EVERY_ERROR") != nullptr;
}

std::u16string devicePath(const std::string& name)
{
    std::u16string path = u"\\" + std::u16string(name.begin(), name.end());
    std::ranges::replace(path, u'/', u'\\');
    return path;
}

bool isReported(Trouble kind, const std::u16string& path)
{
    return std::ranges::any_of(troublesOf(kind, Troubled::File, Since::Job),
                               [&](const auto& each) { return each.name == path; });
}

// The path or a folder above it couldn't be read: what was asked for can't be known then.
bool isHidden(const std::u16string& path)
{
    return std::ranges::any_of(troublesOf(Trouble::Reading, Troubled::File, Since::Job),
                               [&](const auto& each) { return path.starts_with(each.name) || each.name == u"\\"; });
}

BOOL collect(const BYTE* raw, DWORD bytes, void* context)
{
    static_cast<std::string*>(context)->append(reinterpret_cast<const char*>(raw), bytes);
    return TRUE;
}

// Enough that log, list and data outgrow what goes to the host write by write.
Contents manySources()
{
    Contents sources;
    std::mt19937 random(7);
    for (char letter = 'a'; letter < 'm'; letter++) {
        std::string& content = sources[std::string(80, letter)];
        for (int i = 0; i < 400; i++)
            content += static_cast<char>(random());
    }
    return sources;
}

class OutcomeSweepTest : public EngineTest {
protected:
    Contents sources_ = Sources;

    struct Way {
        bool full;
        bool deletes;
    };

    void startOver(const Contents& contents)
    {
        clearFaultPlan();
        std::filesystem::remove_all(store_);
        std::filesystem::create_directories(store_);
        RenewLists();
        for (const auto& [name, content] : contents)
            write(name, content);
        gUser = {};
        gUser.choice = u"\\Card";
        gFullFiles = 1;
        gFullDatabases = gFullRegistry = 0;
        mount();
        BeginJob();
    }

    void startBackup(const Way& way)
    {
        std::filesystem::remove_all(card_);
        std::filesystem::create_directories(card_);
        startOver(sources_);
        for (const auto& [name, content] : sources_) {
            if (!way.full)
                mark(devicePath(name));
        }
        gOptions.deleteBackedUp = way.deletes ? 1 : 0;
        gOptions.generateLog = 1;
    }

    static void run(const Way& way)
    {
        if (way.full)
            RunFullBackup();
        else
            backUp();
    }

    // The whole content of an item in any set of the card, decoded where it lies.
    std::optional<std::string> inSets(const std::string& name)
    {
        std::optional<std::string> found;
        for (const auto& file : std::filesystem::directory_iterator(card_ / "QUILBOX")) {
            const std::string stem = file.path().stem();
            const std::u16string path = u"\\Card\\QUILBOX\\" + std::u16string(stem.begin(), stem.end());
            if (file.path().extension() == ".QLT" && LoadList((path + u".QLT").c_str()))
                found = found ? found : decode(path + u".QDT", devicePath(name));
        }
        return found;
    }

    static std::optional<std::string> decode(const std::u16string& dataPath, const std::u16string& name)
    {
        const HANDLE data = CreateFileW(dataPath.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        std::optional<std::string> found;
        ForEachEntry(gFileList, [&](const EntryBuffer& entry) {
            std::string raw;
            if (name == entry.name && DecodeStream(data, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes),
                                                   collect, &raw) == StreamFault::None)
                found = raw;
        });
        CloseHandle(data);
        return found;
    }

    void expectEachSourceKeptAndReported(const Way& way)
    {
        clearFaultPlan();
        mount();
        const bool noSet =
            !troublesOf(Trouble::Numbering, Troubled::File, Since::Job).empty() || !wasOffered(u"\\Card");
        for (const auto& [name, content] : sources_) {
            SCOPED_TRACE(name);
            const std::u16string path = devicePath(name);
            const bool hidden = way.full && isHidden(path);
            const bool there = exists(name) && read(name) == content;
            const bool stored = std::filesystem::exists(card_ / "QUILBOX") && inSets(name) == content;
            ASSERT_TRUE(there || stored) << "lost";
            ASSERT_TRUE(stored || noSet || hidden || isReported(Trouble::Storing, path)) << "left out in silence";
            if (way.deletes && there && stored) {
                ASSERT_TRUE(isReported(Trouble::Deleting, path) || isReported(Trouble::Storing, path))
                    << "kept in silence";
            }
        }
    }

    // Whether the user could choose what he wanted. Otherwise he sees that it isn't there, and no run begins.
    static bool wasOffered(const std::u16string& wanted)
    {
        return std::ranges::any_of(gUser.shownWith(u"choose "), [&](const std::u16string& choices) {
            return choices.find(u"|" + wanted) != std::u16string::npos;
        });
    }

    // What couldn't be written of an entry was cut off again.
    void expectListsOfWholeEntries()
    {
        for (const WCHAR number : {u'1', u'2'}) {
            const std::u16string path = std::u16string(u"\\Card\\QUILBOX\\QLBX000") + number + u".QLT";
            const HANDLE list = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
            ListReader reader;
            StartListReader(reader, list);
            (void)ReadListHead(reader, gComment);
            ListEntry entry;
            while (ReadListEntry(reader, entry))
                ASSERT_EQ(entry.faults, 0U);
            ASSERT_EQ(reader.bytesBehindEntries, 0U);
            CloseHandle(list);
        }
    }

    void expectEachItemRestoredOrReported(WORD mode)
    {
        clearFaultPlan();
        if (!wasOffered(u"\\Card\\QUILBOX\\QLBX0001.QLT"))
            return;
        const bool noList = isHidden(u"\\Card\\QUILBOX\\QLBX0001.QLT") ||
                            isReported(Trouble::Restoring, u"\\Card\\QUILBOX\\QLBX0001.QLT");
        for (const auto& [name, content] : sources_) {
            SCOPED_TRACE(name);
            const bool kept = mode != RestoreModeReplace && Present.contains(name);
            if (kept) {
                ASSERT_EQ(read(name), Present.at(name)) << "replaced against the policy";
                continue;
            }
            const bool restored = exists(name) && read(name) == content;
            // Who is asked about a file that may be there, and says No, knows.
            if (!gUser.shownWith(u"box Warning|File:" + devicePath(name)).empty())
                continue;
            ASSERT_TRUE(restored || noList || isReported(Trouble::Restoring, devicePath(name)))
                << "not restored in silence";
        }
    }

    // Calls `round` with the nth call failing, for each n until one isn't reached.
    template <class Round>
    static void sweep(const Round& round)
    {
        for (std::uint64_t n = 1;; n++) {
            std::size_t tried = 0;
            bool reached = true;
            for (const int error : Errors) {
                // Three errors a call, others at the next one.
                if (!everyError() && (tried++ + n * 3) % std::size(Errors) >= 3)
                    continue;
                SCOPED_TRACE(testing::Message() << "call " << n << ", " << strerrorname_np(error));
                reached = round(FaultPlan{.kind = FaultKind::Fail, .nthCall = n, .error = error});
                if (HasFatalFailure())
                    return;
            }
            SCOPED_TRACE(testing::Message() << "read " << n << " gives nothing");
            reached = round(FaultPlan{.kind = FaultKind::ShortRead, .nthCall = n});
            if (HasFatalFailure())
                return;
            if (!reached)
                return;
        }
    }
};

}  // namespace

TEST_F(OutcomeSweepTest, BackupLosesNothingAndReportsWhatIsLeftOutWhicheverCallFails)
{
    for (const Way way : {Way{false, false}, Way{false, true}, Way{true, false}, Way{true, true}}) {
        SCOPED_TRACE(testing::Message() << (way.full ? "full" : "selected") << (way.deletes ? ", deleting" : ""));
        sweep([&](const FaultPlan& plan) {
            startBackup(way);
            setFaultPlan(plan);
            run(way);
            const bool reached = hostCallsMade() >= plan.nthCall;
            expectEachSourceKeptAndReported(way);
            return reached;
        });
    }
}

// Of these a failing write may lose bytes that were gathered before.
TEST_F(OutcomeSweepTest, BackupWhoseWritesAreGatheredLosesNothingWhicheverCallFails)
{
    sources_ = manySources();
    const Way way = {false, true};
    bool reached = true;
    for (std::uint64_t n = 1; reached; n++) {
        SCOPED_TRACE(n);
        startBackup(way);
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = n, .error = n % 2 == 0 ? EIO : ENOSPC});
        run(way);
        reached = hostCallsMade() >= n;
        expectEachSourceKeptAndReported(way);
        expectListsOfWholeEntries();
        ASSERT_FALSE(HasFatalFailure());
    }
}

std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// A line is in the log, and data in the data file, before what follows from it: after a kill the log names the item
// whose stream lies half made on the card, and the list names no item that can't be read.
TEST_F(OutcomeSweepTest, KilledBackupLeavesALogUpToDateAndNoEntryWithoutItsData)
{
    sources_ = manySources();
    bool through = false;
    for (std::uint64_t n = 1; !through; n++) {
        SCOPED_TRACE(n);
        startBackup({false, false});
        const pid_t child = fork();
        if (child == 0) {
            setFaultPlan({.kind = FaultKind::Kill, .nthCall = n, .error = 0});
            backUp();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        through = WIFEXITED(status);
        const std::string log = cardFile("BACKUP0001.LOG");
        const std::size_t ended = countOf(log, "INF: End file backup");
        if (std::filesystem::exists(card_ / "QUILBOX" / "BKTMP.000")) {
            ASSERT_EQ(countOf(log, "INF: Start file backup"), ended + 1);
        }
        if (!LoadList(u"\\Card\\QUILBOX\\QLBX0001.QLT"))
            continue;
        std::size_t listed = 0;
        for (const auto& [name, content] : sources_) {
            const auto stored = decode(u"\\Card\\QUILBOX\\QLBX0001.QDT", devicePath(name));
            ASSERT_TRUE(!stored || *stored == content) << name;
            listed += stored ? 1 : 0;
        }
        // The entry that was being written when the kill came has no offsets yet.
        ASSERT_LE(gFileList->Count(), listed + 1);
        ASSERT_LE(listed, ended);
    }
}

TEST_F(OutcomeSweepTest, BackupReportsWhatAFullCardLeavesOut)
{
    for (const Way way : {Way{false, false}, Way{false, true}}) {
        for (std::uint64_t capacity = 0; capacity < 800; capacity++) {
            SCOPED_TRACE(capacity);
            startBackup(way);
            mount(capacity);
            run(way);
            expectEachSourceKeptAndReported(way);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST_F(OutcomeSweepTest, RestoreKeepsThePolicyAndReportsWhatIsMissingWhicheverCallFails)
{
    startBackup({false, false});
    backUp();
    for (const WORD mode : {RestoreModeReplace, RestoreModeSkip, RestoreModeAsk}) {
        SCOPED_TRACE(mode);
        gOptions.restoreMode = mode;
        sweep([&](const FaultPlan& plan) {
            startOver(Present);
            gOptions.restoreMode = mode;
            setFaultPlan(plan);
            restore();
            const bool reached = hostCallsMade() >= plan.nthCall;
            expectEachItemRestoredOrReported(mode);
            return reached;
        });
    }
}
