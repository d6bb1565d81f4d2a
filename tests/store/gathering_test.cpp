// What is on the disk when: gathered changes, kills, a disk that gets full, a damaged record.

#include "database/connection.h"
#include "database/device_database.h"
#include "kernel/troubles.h"
#include "store_fixture.h"

#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace platform::kernel;

namespace {

class GatheringTest : public StoreTest {
protected:
    // Runs `work` in a process of its own, which ends without closing anything.
    template <class Work>
    void inKilledProcess(Work work)
    {
        close();
        const pid_t child = fork();
        if (child == 0) {
            open();
            work();
            (void)kill(getpid(), SIGKILL);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        open();
    }

    // Record number i holds i in each of its properties: one that is mixed or cut shows.
    static Record wholeRecord(LONG i)
    {
        const auto size = static_cast<std::size_t>(i % 300);
        return {number(1, CEVT_I4, i), blob(2, std::string(size, static_cast<char>(i))), number(3, CEVT_I4, i)};
    }

    static void sql(const std::string& statement)
    {
        const platform::database::DatabaseUse use;
        ASSERT_EQ(use->execute(statement), platform::database::Step::Done) << use->lastMessage();
    }
};

TEST_F(GatheringTest, KillAmongWritesLeavesTheFirstRecordsWhole)
{
    create(u"A");
    std::mt19937 random(7);
    for (int round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        const auto before = static_cast<LONG>(recordsOf(u"A").size());
        const auto writes = static_cast<LONG>(random() % 6000);
        inKilledProcess([&] {
            const HANDLE database = opened(u"A");
            for (LONG i = before; i < before + writes; ++i)
                add(database, wholeRecord(i));
        });
        const Records records = recordsOf(u"A");
        ASSERT_LE(records.size(), static_cast<std::size_t>(before + writes));
        ASSERT_GE(static_cast<LONG>(records.size()), std::max(before, before + writes - 4096));
        for (std::size_t i = 0; i < records.size(); ++i)
            ASSERT_EQ(records[i], wholeRecord(static_cast<LONG>(i)));
        ASSERT_EQ(infoOf(u"A").wNumRecords, records.size());
    }
}

TEST_F(GatheringTest, KillAtAnyTimeLeavesTheDatabaseOpening)
{
    create(u"A");
    std::mt19937 random(11);
    for (int round = 0; round < 6; ++round) {
        close();
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            open();
            const HANDLE database = opened(u"A");
            LONG next = static_cast<LONG>(recordsOf(u"A").size());
            for (;; ++next) {
                add(database, wholeRecord(next));
                // Each writes a byte for the parent, whose number of reads decides where it dies.
                if (::write(ready[1], "", 1) != 1)
                    _exit(1);
            }
        }
        ::close(ready[1]);
        char byte = 0;
        for (auto left = random() % 2000; left > 0; --left)
            ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        (void)kill(child, SIGKILL);
        (void)waitpid(child, nullptr, 0);
        ::close(ready[0]);
        open();
        const Records records = recordsOf(u"A");
        for (std::size_t i = 0; i < records.size(); ++i)
            ASSERT_EQ(records[i], wholeRecord(static_cast<LONG>(i)));
    }
}

TEST_F(GatheringTest, WhatMustBeOnTheDiskIsThereAfterAKill)
{
    create(u"A");
    create(u"B");
    inKilledProcess([&] {
        const HANDLE a = opened(u"A");
        add(a, {text(1, u"closed")});
        CloseHandle(a);
        const HANDLE b = opened(u"B");
        add(b, {text(1, u"before the other handle's change")});
        const HANDLE again = opened(u"A");
        add(again, {text(1, u"before a database is made")});
        create(u"C");
        add(again, {text(1, u"gathered and lost")});
    });
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(1, u"closed")}, {text(1, u"before a database is made")}}));
    EXPECT_EQ(recordsOf(u"B"), Records{{text(1, u"before the other handle's change")}});
    EXPECT_TRUE(exists(u"C"));
}

TEST_F(GatheringTest, ChangeBehindAReadIsOnTheDiskWhenItsCallReturns)
{
    create(u"A");
    const CEOID gone = create(u"Gone");
    const HANDLE filled = opened(u"A");
    add(filled, {text(1, u"read")});
    CloseHandle(filled);
    inKilledProcess([&] {
        const HANDLE reader = opened(u"A");
        read(reader);
        create(u"B");
        read(reader);
        CeDeleteDatabase(gone);
        read(reader);
        sql("UPDATE store_database SET type = 5 WHERE name = 'A'");
        read(reader);
    });
    EXPECT_TRUE(exists(u"B"));
    EXPECT_FALSE(exists(u"Gone"));
    EXPECT_EQ(infoOf(u"A").dwDbaseType, 5U);
}

TEST_F(GatheringTest, ReaderSeesWhatIsGatheredAndAnotherRoomPutsItOnTheDisk)
{
    create(u"A");
    inKilledProcess([&] {
        const HANDLE database = opened(u"A");
        add(database, {text(1, u"one")});
        if (recordsOf(u"A").size() != 1)
            _exit(1);
        const platform::database::DatabaseUse registryCall;
        platform::database::Transaction transaction(*registryCall);
        if (transaction.commit() != platform::database::Step::Done)
            _exit(2);
    });
    EXPECT_EQ(recordsOf(u"A").size(), 1U);
}

TEST_F(GatheringTest, ARecordThatFindsNoRoomCostsNoOther)
{
    create(u"A");
    create(u"B");
    const HANDLE database = opened(u"A");
    add(database, {text(1, u"kept")});
    CloseHandle(database);

    sql("PRAGMA max_page_count = 40");
    const HANDLE full = opened(u"A");
    std::size_t taken = 0;
    while (taken < 1000 && add(full, {blob(1, std::string(2000, 'x'))}) != 0)
        ++taken;
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_TRUE(CloseHandle(full));
    const Records records = recordsOf(u"A");
    EXPECT_EQ(infoOf(u"A").wNumRecords, records.size());
    EXPECT_EQ(records.front(), Record{text(1, u"kept")});
    EXPECT_EQ(records.size(), 1 + taken);
    EXPECT_LT(taken, 1000U);
    const auto noted = troublesOf(Trouble::Writing, Troubled::Database);
    ASSERT_FALSE(noted.empty());
    EXPECT_EQ(noted.front().name, u"A");
    EXPECT_EQ(noted.front().error, ERROR_DISK_FULL);

    sql("PRAGMA max_page_count = 100000");
    const HANDLE again = opened(u"B");
    EXPECT_NE(add(again, {blob(1, "fits")}), 0U);
    EXPECT_TRUE(CloseHandle(again));
}

TEST_F(GatheringTest, ChangeOfSeveralCallsIsThereAsAWholeOrNotAtAll)
{
    create(u"A");
    const auto change = [](bool lost) {
        EXPECT_TRUE(BeginStoreChange());
        EXPECT_FALSE(BeginStoreChange());
        CEOID oid = 0;
        CloseHandle(CeOpenDatabase(&oid, u"A", 0, 0, nullptr));
        EXPECT_TRUE(CeDeleteDatabase(oid));
        if (lost)  // as a full disk may do it
            sql("ROLLBACK");
        EXPECT_EQ(create(u"B") != 0, !lost);
        if (lost)
            return;
        const HANDLE database = opened(u"B");
        EXPECT_NE(add(database, {text(1, u"b")}), 0U);
        EXPECT_TRUE(CloseHandle(database));
    };
    const auto left = [](const std::u16string& here, const std::u16string& gone) {
        EXPECT_TRUE(exists(here));
        EXPECT_FALSE(exists(gone));
    };
    inKilledProcess([&] { change(false); });
    left(u"A", u"B");
    change(false);
    EXPECT_TRUE(EndStoreChange(FALSE));
    left(u"A", u"B");
    change(true);
    EXPECT_FALSE(EndStoreChange(TRUE));
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    left(u"A", u"B");
    change(false);
    EXPECT_TRUE(EndStoreChange(TRUE));
    inKilledProcess([] {});
    left(u"B", u"A");
    EXPECT_EQ(recordsOf(u"B"), Records{{text(1, u"b")}});
    EXPECT_FALSE(EndStoreChange(TRUE));
}

TEST_F(GatheringTest, ThreadsWithHandlesOfTheirOwnLoseNoChange)
{
    const std::u16string names[] = {u"A", u"B", u"A"};
    create(u"A");
    create(u"B");
    std::vector<std::jthread> threads;
    for (const std::u16string& name : names) {
        threads.emplace_back([&name] {
            const HANDLE database = opened(name, CEDB_AUTOINCREMENT);
            for (LONG i = 0; i < 50; ++i) {
                add(database, wholeRecord(i));
                CeSeekDatabase(database, CEDB_SEEK_END, 1, nullptr);
                read(database);
            }
            EXPECT_TRUE(CloseHandle(database));
        });
    }
    threads.clear();
    EXPECT_EQ(recordsOf(u"A").size(), 100U);
    EXPECT_EQ(recordsOf(u"B").size(), 50U);
}

TEST_F(GatheringTest, DamagedRecordIsRefusedAndCostsOnlyItself)
{
    create(u"A");
    const HANDLE database = opened(u"A", CEDB_AUTOINCREMENT);
    const CEOID first = add(database, {text(1, u"text"), blob(2, "bytes")});
    add(database, {text(1, u"sound")});
    CloseHandle(database);
    const std::string oid = std::to_string(first);
    for (const std::string bytes : {"X'01'", "X'010002000000'", "X'1F00010000000500000041'", "X'4100010000000FFFFFFF'",
                                    "X'41000100000000000000FF'"}) {
        SCOPED_TRACE(bytes);
        sql("UPDATE store_record SET properties = " + bytes + " WHERE oid = " + oid);
        const HANDLE reader = opened(u"A", CEDB_AUTOINCREMENT);
        EXPECT_TRUE(read(reader).empty());
        EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
        EXPECT_EQ(write(reader, first, {text(1, u"new")}), 0U);
        EXPECT_NE(CeSeekDatabase(reader, CEDB_SEEK_CURRENT, 1, nullptr), 0U);
        EXPECT_EQ(read(reader), Record{text(1, u"sound")});
        CloseHandle(reader);
    }
}

}  // namespace
