// sweep_test.cpp - repeats a run, each time with one fault at another point. The fault is a failed call on the host, a
// full card, a kill of the process or a power cut. No source and no content is lost, and a restore replaces no file
// that restoreMode protects. Each item that isn't in the set, isn't restored or isn't deleted is reported.
//
// The normal suite tries each call with only a few of the errors, and the next call with others. QUILLBOX_EVERY_ERROR=1
// tries every call with all errors, some 30,000 faults.

#include "engine_fixture.h"

#include "engine/questions.h"
#include "engine/stored_digests.h"
#include "kernel/run_progress.h"
#include "set/block_codec.h"
#include "set/list_file.h"
#include "set/list_reader.h"
#include "set/stream_decoding.h"
#include "thread_ahead.h"

#include "ce/dialog.h"
#include "ce/outcome.h"

#include <algorithm>
#include <cerrno>

using namespace platform::file;
using platform::kernel::Since;
using platform::kernel::Trouble;
using platform::kernel::Troubled;
using platform::kernel::troublesOf;

namespace {

using Contents = std::map<std::string, std::string>;  // key: the name below the root
using Items = std::map<std::u16string, std::string>;  // key: the path on the device

const Contents Sources = {
    {"a.txt", "The first of the files."},
    {"empty", ""},
    {"noise", "\x91\x03\xe7\x5a\xc4\x18\xfe\x27\xb0\x6d\x99\x42"},
    {"sub/run.txt", std::string(3000, 'x') + "end"},
};

// The files on the device before a restore.
const Contents Present = {{"a.txt", "Written after the backup."}, {"empty", "Not empty any more."}};

// The documented errors of the calls that the file layer makes. ENOENT, ENOTDIR and EEXIST aren't among them, because
// each of them says that something exists or doesn't exist, and that would be false here. Nor are ELOOP and EXDEV,
// which mean that a path leads out of the device.
constexpr int Errors[] = {EIO,          ENOSPC,    EACCES, ENOMEM,  EROFS,   EMFILE,   EBADF,  EINVAL,
                          EPERM,        ESTALE,    ENODEV, ENXIO,   EDQUOT,  EFBIG,    ENFILE, EBUSY,
                          EOPNOTSUPP,   EOVERFLOW, EFAULT, ETXTBSY, EAGAIN,  EISDIR,   EMLINK, ENOSYS,
                          ENAMETOOLONG, ESPIPE,    EPIPE,  E2BIG,   ENODATA, ENOTEMPTY};

// Returns by how much a sweep advances from one round to the next, in calls or in bytes of the card's capacity. It is 1
// unless the environment variable sets another step. The sanitized builds set it (CMakeLists.txt), because a sanitizer
// finds nothing new in the rounds that are left out.
std::uint64_t stepFrom(const char* variable)
{
    const char* text = std::getenv(variable);
    return text ? std::stoull(text) : 1;
}

const std::uint64_t FaultStep = stepFrom("QUILLBOX_FAULT_STEP");
const std::uint64_t KillStep = stepFrom("QUILLBOX_KILL_STEP");

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

// Returns whether the path or a folder above it couldn't be read. In that case a full backup can't know which files it
// leaves out.
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

// Returns files that cause three things in one run. First, the log, the list and the data become longer than what the
// file layer gathers before it writes. Second, a group of waiting entries (backup_entry.h) becomes full. Third, a
// larger file ends another group before it is full.
Contents manySources()
{
    Contents sources;
    const std::string pattern = patternBytes(9000);
    for (char letter = 'a'; letter < 'y'; letter++)
        sources[std::string(80, letter)] = pattern.substr(static_cast<std::size_t>(letter), letter == 't' ? 5000 : 400);
    return sources;
}

std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

class SweepTest : public EngineTest {
protected:
    struct Way {
        bool full;
        bool deletes;
    };

    Contents sources_ = Sources;

    void startOver(const Contents& contents)
    {
        std::filesystem::remove_all(root());
        std::filesystem::create_directories(root());
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
        std::filesystem::remove_all(set_);
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

    // Runs a backup in a child process under the plan. Returns false if the plan ended the process.
    static bool backUpEnds(const FaultPlan& plan)
    {
        return statusOfChild([&] {
                   setFaultPlan(plan);
                   backUp();
                   return true;
               }) == 0;
    }

    [[nodiscard]] bool isOnDevice(const std::string& name) const
    {
        return exists(name) && read(name) == sources_.at(name);
    }

    // Returns the complete items of each set on the card. It reads each set once.
    [[nodiscard]] std::vector<Items> storedItems() const
    {
        std::vector<Items> sets;
        std::error_code noSet;
        for (const auto& file : std::filesystem::directory_iterator(set_, noSet)) {
            const std::u16string path = u"\\Card\\QUILBOX\\" + file.path().stem().u16string();
            if (file.path().extension() == ".QLT" && LoadList((path + u".QLT").c_str()))
                sets.push_back(decodeListed(path + u".QDT"));
        }
        return sets;
    }

    [[nodiscard]] bool isStored(const std::vector<Items>& sets, const std::string& name) const
    {
        return std::ranges::any_of(sets, [&](const Items& items) {
            const auto found = items.find(devicePath(name));
            return found != items.end() && found->second == sources_.at(name);
        });
    }

    // Returns the items of the loaded list whose streams are complete.
    static Items decodeListed(const std::u16string& dataPath)
    {
        const HANDLE data = open(dataPath, GENERIC_READ, OPEN_EXISTING);
        Items found;
        ForEachEntry(gFileList, [&](const EntryBuffer& entry) {
            std::string raw;
            if (DecodeStream(data, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes), collect, &raw) ==
                StreamFault::None)
                found[entry.name] = raw;
        });
        CloseHandle(data);
        return found;
    }

    void expectNothingLost()
    {
        mount();
        const std::vector<Items> sets = storedItems();
        for (const auto& [name, content] : sources_)
            ASSERT_TRUE(isOnDevice(name) || isStored(sets, name)) << name << " is lost";
    }

    void expectEachSourceKeptAndReported(const Way& way)
    {
        mount();
        const bool noSet =
            !troublesOf(Trouble::Numbering, Troubled::File, Since::Job).empty() || !wasOffered(u"\\Card");
        const std::vector<Items> sets = storedItems();
        for (const auto& [name, content] : sources_) {
            SCOPED_TRACE(name);
            const std::u16string path = devicePath(name);
            const bool kept = isOnDevice(name);
            const bool stored = isStored(sets, name);
            ASSERT_TRUE(kept || stored) << "lost";
            ASSERT_TRUE(stored || noSet || (way.full && isHidden(path)) || isReported(Trouble::Storing, path))
                << "left out without a report";
            if (way.deletes && kept && stored) {
                ASSERT_TRUE(isReported(Trouble::Deleting, path) || isReported(Trouble::Storing, path))
                    << "kept without a report";
            }
        }
    }

    // Returns whether the user could choose this. If it wasn't offered, the user sees so, and no run begins.
    static bool wasOffered(const std::u16string& wanted)
    {
        return std::ranges::any_of(gUser.shownWith(u"choose "), [&](const std::u16string& choices) {
            return choices.find(u"|" + wanted) != std::u16string::npos;
        });
    }

    struct ListState {
        DWORD headFaults = 0;
        DWORD entryFaults = 0;
        DWORD bytesAfterEntries = 0;
    };

    static ListState stateOfList(const WCHAR* path)
    {
        const HANDLE list = open(path, GENERIC_READ, OPEN_EXISTING);
        ListReader reader;
        StartListReader(reader, list);
        ListState state;
        state.headFaults = ReadListHead(reader, gComment);
        ListEntry entry;
        while (ReadListEntry(reader, entry))
            state.entryFaults |= entry.faults;
        state.bytesAfterEntries = reader.bytesAfterEntries;
        CloseHandle(list);
        return state;
    }

    // The run has removed each entry that it couldn't write completely from its list. The list is finished unless its
    // last step, or the flush of the data before this step, has failed.
    static void expectListsOfWholeEntries()
    {
        for (const std::u16string stem : {u"\\Card\\QUILBOX\\QLBX0001", u"\\Card\\QUILBOX\\QLBX0002"}) {
            const ListState state = stateOfList((stem + u".QLT").c_str());
            ASSERT_EQ(state.entryFaults, 0U);
            ASSERT_TRUE(state.bytesAfterEntries == 0 || isReported(Trouble::Writing, stem + u".QLT") ||
                        isReported(Trouble::Writing, stem + u".QDT"));
        }
    }

    // A killed run leaves a list with a fault, unless all items are in the set.
    void expectFaultOrAllItemsInList()
    {
        if (!std::filesystem::exists(set_ / "QLBX0001.QLT"))
            return;
        mount();
        const ListState state = stateOfList(u"\\Card\\QUILBOX\\QLBX0001.QLT");
        if (state.headFaults != 0 || state.entryFaults != 0 || state.bytesAfterEntries != 0)
            return;
        const std::vector<Items> sets = storedItems();
        for (const auto& [name, content] : sources_)
            ASSERT_TRUE(isStored(sets, name)) << name << " is missing in a list without a fault";
    }

    void expectEachItemRestoredOrReported(WORD mode)
    {
        if (!wasOffered(u"\\Card\\QUILBOX\\QLBX0001.QLT"))
            return;
        const bool noList = isHidden(u"\\Card\\QUILBOX\\QLBX0001.QLT") ||
                            isReported(Trouble::Restoring, u"\\Card\\QUILBOX\\QLBX0001.QLT");
        for (const auto& [name, content] : sources_) {
            SCOPED_TRACE(name);
            if (mode != RestoreModeReplace && Present.contains(name)) {
                ASSERT_EQ(read(name), Present.at(name)) << "replaced against the policy";
                continue;
            }
            // If the user was asked whether to replace the file and answered No, no report is needed.
            const bool asked = !gUser.shownWith(u"ask replace " + devicePath(name)).empty();
            ASSERT_TRUE(isOnDevice(name) || asked || noList || isReported(Trouble::Restoring, devicePath(name)))
                << "not restored, without a report";
        }
    }

    // Calls `round` repeatedly with a plan in which the nth call fails: for n = 1, 2, ... until the run makes fewer
    // than n calls.
    template <class Round>
    static void sweep(const Round& round)
    {
        static const bool everyError = std::getenv("QUILLBOX_EVERY_ERROR") != nullptr;
        bool reached = true;
        for (std::uint64_t n = 1; reached && !HasFatalFailure(); n += FaultStep) {
            std::size_t tried = 0;
            for (const int error : Errors) {
                // Each call is tried with three errors, and the next call with three others.
                if (HasFatalFailure() || (!everyError && (tried++ + n * 3) % std::size(Errors) >= 3))
                    continue;
                SCOPED_TRACE(testing::Message() << "call " << n << ", " << strerrorname_np(error));
                round(FaultPlan{.kind = FaultKind::Fail, .nthCall = n, .error = error});
            }
            SCOPED_TRACE(testing::Message() << "read " << n << " gives nothing");
            reached = round(FaultPlan{.kind = FaultKind::ShortRead, .nthCall = n});
        }
    }
};

}  // namespace

TEST_F(SweepTest, BackupLosesNothingAndReportsWhatIsLeftOutWhicheverCallFails)
{
    for (const Way way : {Way{false, false}, Way{false, true}, Way{true, false}, Way{true, true}}) {
        SCOPED_TRACE(testing::Message() << (way.full ? "full" : "selected") << (way.deletes ? ", deleting" : ""));
        sweep([&](const FaultPlan& plan) {
            startBackup(way);
            const bool reached = hostCallsOf([&] { run(way); }, plan) >= plan.nthCall;
            expectEachSourceKeptAndReported(way);
            return reached;
        });
    }
}

// In this test a failing write can lose bytes that earlier calls gathered.
TEST_F(SweepTest, BackupWhoseWritesAreGatheredLosesNothingWhicheverCallFails)
{
    sources_ = manySources();
    for (const Way way : {Way{false, true}, Way{false, false}}) {
        gDigestsBlocks = true;
        bool reached = true;
        for (std::uint64_t n = 1; reached; n += FaultStep) {
            SCOPED_TRACE(testing::Message() << (way.deletes ? "deleting, " : "") << n);
            startBackup(way);
            gStoredDigests.clear();
            const FaultPlan plan = {.kind = FaultKind::Fail, .nthCall = n, .error = n % 2 == 0 ? EIO : ENOSPC};
            reached = hostCallsOf([&] { run(way); }, plan) >= n;
            expectEachSourceKeptAndReported(way);
            expectListsOfWholeEntries();
            ASSERT_FALSE(HasFatalFailure());
            const std::size_t reported = troublesOf(Trouble::Storing, Troubled::File, Since::Job).size();
            if (gLastSetNumber != 1 || !LoadList(u"\\Card\\QUILBOX\\QLBX0001.QLT"))
                continue;
            ASSERT_EQ(gStoredDigests.size(), gFileList->Count());
            ASSERT_EQ(platform::kernel::runProgress().made[OutcomeFile - 1], sources_.size() - reported);
        }
        gDigestsBlocks = false;
    }
}

TEST_F(SweepTest, ListStaysUnfinishedIfTheDataCannotBeFlushed)
{
    const Way way = {false, false};
    startBackup(way);
    std::uint64_t n = hostCallsOf([&] { run(way); });
    EXPECT_EQ(stateOfList(u"\\Card\\QUILBOX\\QLBX0001.QLT").bytesAfterEntries, 0U);
    // The last call whose failure is reported for the data file belongs to its flush at the end of the run.
    do {
        startBackup(way);
        hostCallsOf([&] { run(way); }, {.kind = FaultKind::Fail, .nthCall = n, .error = EIO});
    } while (--n != 0 && !isReported(Trouble::Writing, u"\\Card\\QUILBOX\\QLBX0001.QDT"));
    ASSERT_NE(n, 0U);
    EXPECT_EQ(stateOfList(u"\\Card\\QUILBOX\\QLBX0001.QLT").bytesAfterEntries, 1U);
}

TEST_F(SweepTest, BackupThatDeletesLosesNothingWhereverTheProcessIsKilledOrThePowerIsCut)
{
    for (const FaultKind kind : {FaultKind::Kill, FaultKind::PowerCut}) {
        bool ended = false;
        for (std::uint64_t n = 1; !ended; n += KillStep) {
            SCOPED_TRACE(testing::Message() << (kind == FaultKind::Kill ? "kill " : "power cut ") << n);
            startBackup({false, true});
            ended = backUpEnds({.kind = kind, .nthCall = n});
            expectNothingLost();
            expectFaultOrAllItemsInList();
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

// A log line is written before the item that it announces, and data before the list entry that refers to it. So after a
// kill, the log names the item whose stream is incomplete on the card, and every item in the list can be read, except
// the one whose entry was being written.
TEST_F(SweepTest, KilledBackupLeavesACurrentLogAndNoEntryWithoutItsData)
{
    sources_ = manySources();
    bool ended = false;
    for (std::uint64_t n = 1; !ended; n += KillStep) {
        SCOPED_TRACE(n);
        startBackup({false, false});
        gAheadWakes = n % 2 != 0 ? 1 : AheadItems;
        ended = backUpEnds({.kind = FaultKind::Kill, .nthCall = n});
        const std::string log = readOnCard("BACKUP0001.LOG");
        const std::size_t backedUp = countOf(log, "INF: End file backup");
        ASSERT_LE(countOf(log, "INF: Start file backup"), backedUp + 1);
        ASSERT_FALSE(std::filesystem::exists(set_ / "BKTMP.000"));
        if (!LoadList(u"\\Card\\QUILBOX\\QLBX0001.QLT"))
            continue;
        const Items stored = decodeListed(u"\\Card\\QUILBOX\\QLBX0001.QDT");
        std::size_t listed = 0;
        for (const auto& [name, content] : sources_) {
            const auto found = stored.find(devicePath(name));
            ASSERT_TRUE(found == stored.end() || found->second == content) << name;
            listed += found != stored.end() ? 1 : 0;
        }
        // The entry that was being written at the kill has no offsets yet.
        ASSERT_LE(gFileList->Count(), listed + 1);
        ASSERT_LE(listed, backedUp);
        expectFaultOrAllItemsInList();
        ASSERT_FALSE(HasFatalFailure());
    }
    gAheadWakes = AheadItems / 2;
}

TEST_F(SweepTest, BackupLosesNothingAndReportsWhatIsLeftOutWhereverTheCardIsFull)
{
    for (const Way way : {Way{false, false}, Way{false, true}}) {
        bool allStored = false;
        for (std::uint64_t capacity = 0; !allStored; capacity += FaultStep) {
            SCOPED_TRACE(capacity);
            startBackup(way);
            mount(capacity);
            run(way);
            expectEachSourceKeptAndReported(way);
            expectListsOfWholeEntries();
            ASSERT_FALSE(HasFatalFailure());
            allStored = troublesOf(Trouble::Storing, Troubled::File, Since::Job).empty() &&
                        isStored(storedItems(), "sub/run.txt");
            ASSERT_LT(capacity, 10'000U) << "a card of any size is full";
        }
    }
}

TEST_F(SweepTest, SourceThatChangesAfterItWasReadIsNotDeleted)
{
    startBackup({false, true});
    const std::filesystem::path source = root() / "a.txt";
    const auto time = std::filesystem::last_write_time(source);
    gUser.seesMessage = [&](const std::u16string& message) {
        // At this message a.txt was already read. It is deleted only later, with its group.
        if (message != u"File: \\sub\\run.txt")
            return;
        write("a.txt", "Of the size in the set.");
        std::filesystem::last_write_time(source, time);
    };
    backUp();
    EXPECT_EQ(read("a.txt"), "Of the size in the set.");
    EXPECT_FALSE(exists("sub/run.txt"));
}

TEST_F(SweepTest, SourcesOfSeveralGroupsAreAllDeleted)
{
    sources_.clear();
    for (int number = 0; number < 150; number++)
        sources_["many" + std::to_string(number)] = std::to_string(number);
    startBackup({false, true});
    backUp();
    EXPECT_TRUE(std::filesystem::is_empty(root()));
    expectNothingLost();
}

TEST_F(SweepTest, RestoreKeepsThePolicyAndReportsWhatIsMissingWhicheverCallFails)
{
    startBackup({false, false});
    backUp();
    for (const WORD mode : {RestoreModeReplace, RestoreModeSkip, RestoreModeAsk}) {
        SCOPED_TRACE(mode);
        gOptions.restoreMode = mode;
        sweep([&](const FaultPlan& plan) {
            startOver(Present);
            const bool reached = hostCallsOf([&] { restore(); }, plan) >= plan.nthCall;
            expectEachItemRestoredOrReported(mode);
            return reached;
        });
    }
}
