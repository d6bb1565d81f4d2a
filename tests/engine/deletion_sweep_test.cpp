// deletion_sweep_test.cpp - "Delete backuped files" under every fault: whatever happens wherever, each source is still
// there or whole in a set that can be read.

#include "engine_fixture.h"

#include "engine/backup_run.h"
#include "engine/options.h"
#include "file/host_faults.h"
#include "set/list_reader.h"
#include "set/set_state.h"

#include "ce/file.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <random>

using namespace platform::file;

namespace {

// Small, so that every byte of a card can be tried; one that doesn't pack, one that is empty, one with a long run.
const std::map<std::string, std::string> Sources = {
    {"a.txt", "The first of the files."},
    {"empty", ""},
    {"noise", "\x91\x03\xe7\x5a\xc4\x18\xfe\x27\xb0\x6d\x99\x42"},
    {"run.txt", std::string(3000, 'x') + "end"},
};

class DeletionSweepTest : public EngineTest {
protected:
    void startOver()
    {
        removeAll("");
        std::filesystem::remove_all(card_);
        std::filesystem::create_directories(store_);
        std::filesystem::create_directories(card_);
        RenewLists();
        for (const auto& [name, content] : Sources) {
            write(name, content);
            mark(u"\\" + std::u16string(name.begin(), name.end()));
        }
        gOptions.deleteBackedUp = 1;
        gUser = {};
        gUser.choice = u"\\Card";
        mount();
    }

    void expectNothingLost()
    {
        clearFaultPlan();
        mount();
        // What is still there isn't to be replaced by a stream that was cut short.
        gOptions.restoreMode = RestoreModeSkip;
        bool restored = false;
        for (const auto& [name, content] : Sources) {
            if (exists(name)) {
                ASSERT_TRUE(read(name) == content) << name;
                continue;
            }
            if (!restored)
                restoreEverySet();
            restored = true;
            ASSERT_TRUE(exists(name)) << name << " is neither on the device nor in the set";
            ASSERT_TRUE(read(name) == content) << name;
        }
    }

    // An entry that couldn't be written whole was cut off again.
    static void expectWholeEntries()
    {
        const HANDLE list =
            CreateFileW(u"\\Card\\QUILBOX\\QLBX0001.QLT", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (list == INVALID_HANDLE_VALUE)
            return;
        ListReader reader;
        ListEntry entry;
        StartListReader(reader, list);
        if (ReadListHead(reader, gComment) == 0) {
            while (ReadListEntry(reader, entry))
                EXPECT_EQ(entry.faults, 0U);
            EXPECT_EQ(reader.bytesBehindEntries, 0U);
        }
        CloseHandle(list);
    }

    // A number that couldn't be had was passed over, so the set needn't be the first.
    void restoreEverySet()
    {
        for (const auto& file : std::filesystem::directory_iterator(card_ / "QUILBOX")) {
            if (file.path().extension() == ".QLT")
                restore(file.path().stem());
        }
    }

    // A backup in a process of its own, which the plan ends; true if it got through.
    bool backUpUnder(const FaultPlan& plan)
    {
        const pid_t child = fork();
        if (child == 0) {
            setFaultPlan(plan);
            backUp();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    void sweepEnds(FaultKind kind)
    {
        for (std::uint64_t n = 1;; n++) {
            SCOPED_TRACE(n);
            startOver();
            const bool through = backUpUnder({.kind = kind, .nthCall = n, .error = 0});
            expectNothingLost();
            if (HasFatalFailure() || through)
                return;
        }
    }
};

}  // namespace

TEST_F(DeletionSweepTest, SourceIsNeverLostWhereverTheCardFillsUp)
{
    for (std::uint64_t capacity = 0;; capacity++) {
        SCOPED_TRACE(capacity);
        startOver();
        mount(capacity);
        backUp();
        expectWholeEntries();
        std::size_t deleted = 0;
        for (const auto& [name, content] : Sources)
            deleted += exists(name) ? 0 : 1;
        expectNothingLost();
        if (HasFatalFailure() || deleted == Sources.size())
            return;
        ASSERT_LT(capacity, 10'000U) << "never got through";
    }
}

TEST_F(DeletionSweepTest, SourceIsNeverLostToAStreamWithAHoleWhereACardHadNoRoomForAMoment)
{
    startOver();
    RenewLists();
    std::string noise(2000, 0);
    std::generate(noise.begin(), noise.end(),
                  [random = std::mt19937()]() mutable { return static_cast<char>(random()); });
    mark(u"\\noise");
    std::size_t kept = 0;
    for (std::uint64_t room = 2000; room < 4400; room += 100) {
        std::filesystem::remove_all(card_ / "QUILBOX");
        write("noise", noise);
        std::ofstream(card_ / "filler") << std::string(5000, 'f');
        mount(5000 + room);
        gUser.seesCount = [] { DeleteFileW(u"\\Card\\filler"); };
        backUp();
        mount();
        if (exists("noise"))
            kept++;
        else
            restore();
        EXPECT_TRUE(read("noise") == noise) << room;
    }
    EXPECT_GT(kept, 0U);
}

TEST_F(DeletionSweepTest, SourceIsNeverLostWhicheverFileCallFails)
{
    for (std::uint64_t n = 1;; n++) {
        SCOPED_TRACE(n);
        startOver();
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = n, .error = EIO});
        backUp();
        const bool reached = hostCallsMade() >= n;
        expectNothingLost();
        if (HasFatalFailure() || !reached)
            return;
    }
}

TEST_F(DeletionSweepTest, SourceIsNeverLostWhereverTheProcessIsKilled)
{
    sweepEnds(FaultKind::Kill);
}

TEST_F(DeletionSweepTest, SourceIsNeverLostWhereverThePowerIsCut)
{
    sweepEnds(FaultKind::PowerCut);
}

TEST_F(DeletionSweepTest, SourceThatChangesAfterItWasReadStays)
{
    namespace fs = std::filesystem;
    const std::string sameSize = "Unlike what the set has.";
    const auto putTimeBack = [this](fs::file_time_type time) { fs::last_write_time(store_ / "a.txt", time); };
    const std::function<void(fs::file_time_type)> changes[] = {
        [&](auto) { write("a.txt", sameSize.substr(1)); },
        [&](auto time) {
            write("a.txt", sameSize);
            putTimeBack(time);
        },
        [&](auto time) {
            write("new", sameSize.substr(1));
            fs::rename(store_ / "new", store_ / "a.txt");
            putTimeBack(time);
        },
    };
    for (const auto& change : changes) {
        startOver();
        const auto time = fs::last_write_time(store_ / "a.txt") - std::chrono::hours(1);
        putTimeBack(time);
        gUser.seesMessage = [&](const std::u16string& message) {
            // The first one has been read and waits for its deletion while the last one begins.
            if (message == u"File: \\run.txt")
                change(time);
        };
        backUp();
        EXPECT_TRUE(read("a.txt").starts_with("nlike") || read("a.txt") == sameSize);
        EXPECT_FALSE(exists("run.txt"));
    }
}

TEST_F(DeletionSweepTest, MoreSourcesThanOneGroupAllGo)
{
    startOver();
    RenewLists();
    for (int number = 0; number < 150; number++) {
        const std::string name = "many" + std::to_string(number);
        write(name, name);
        mark(u"\\" + std::u16string(name.begin(), name.end()));
    }
    backUp();
    for (int number = 0; number < 150; number++)
        ASSERT_FALSE(exists("many" + std::to_string(number)));
    restore();
    EXPECT_EQ(read("many149"), "many149");
}
