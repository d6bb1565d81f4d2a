// When changes of the store reach the disk: gathered changes, kills, a full disk, a damaged record.

#include "database/connection.h"
#include "kernel/troubles.h"
#include "store_fixture.h"

#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace platform::kernel;

namespace {

class GatheringTest : public StoreTest {
protected:
    // Runs `work` in another process, and kills this process before it closes the store.
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

    static bool commitRegistryCall()
    {
        const platform::database::DatabaseUse registryCall;
        platform::database::Transaction transaction(*registryCall);
        return transaction.commit() == platform::database::Step::Done;
    }

    static void sql(const std::string& statement)
    {
        const platform::database::DatabaseUse use;
        ASSERT_EQ(use->execute(statement), platform::database::Step::Done) << use->lastMessage();
    }
};

TEST_F(GatheringTest, ReaderSeesGatheredRecordsAndAChangeOfAnotherKindPutsThemOnTheDisk)
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
        add(again, {text(1, u"before a commit of the registry")});
        if (recordsOf(u"A").size() != 3 || !commitRegistryCall())
            _exit(1);
        add(again, {text(1, u"gathered and lost")});
    });
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(1, u"closed")},
                                        {text(1, u"before a database is made")},
                                        {text(1, u"before a commit of the registry")}}));
    EXPECT_EQ(recordsOf(u"B"), Records{{text(1, u"before the other handle's change")}});
    EXPECT_TRUE(exists(u"C"));
}

TEST_F(GatheringTest, ChangeAfterAReadIsOnTheDiskWhenItsCallReturns)
{
    create(u"A", 0, {{text(1, u"read")}});
    const CEOID gone = create(u"Gone");
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

TEST_F(GatheringTest, RecordThatFindsNoRoomIsRefusedAndTheOthersAreKept)
{
    create(u"Full", 0, {{text(1, u"kept")}});
    create(u"B");

    sql("PRAGMA max_page_count = 40");
    std::size_t taken = 0;
    {
        const OpenDatabase database(u"Full");
        while (taken < 1000 && add(database, {blob(1, std::string(2000, 'x'))}) != 0)
            ++taken;
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    }
    EXPECT_LT(taken, 1000U);
    const Records records = recordsOf(u"Full");
    EXPECT_EQ(infoOf(u"Full").wNumRecords, records.size());
    EXPECT_EQ(records.front(), Record{text(1, u"kept")});
    EXPECT_EQ(records.size(), 1 + taken);
    const auto noted = troublesOf(Trouble::Writing, Troubled::Database);
    ASSERT_FALSE(noted.empty());
    EXPECT_EQ(noted.back().name, u"Full");
    EXPECT_EQ(noted.back().error, ERROR_DISK_FULL);

    sql("PRAGMA max_page_count = 100000");
    EXPECT_NE(add(OpenDatabase(u"B"), {blob(1, "fits")}), 0U);
}

TEST_F(GatheringTest, DamagedRowIsReportedAgainAfterADeletionThatCouldNotBeCommitted)
{
    const CEOID damaged = create(u"A");
    sql("UPDATE store_database SET folded = 'else'");
    close();
    open();
    EXPECT_FALSE(exists(u"A"));
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);

    sql("CREATE TABLE hurdle (key REFERENCES registry_key (id) DEFERRABLE INITIALLY DEFERRED)");
    sql("CREATE TRIGGER raise AFTER DELETE ON store_database BEGIN INSERT INTO hurdle VALUES (-1); END");
    EXPECT_FALSE(CeDeleteDatabase(damaged));
    EXPECT_FALSE(exists(u"A"));
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);

    sql("DROP TRIGGER raise");
    EXPECT_TRUE(CeDeleteDatabase(damaged));
    EXPECT_FALSE(exists(u"A"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(GatheringTest, ChangeOfSeveralCallsIsAppliedAsAWholeOrNotAtAll)
{
    create(u"A");
    const auto change = [](bool lost) {
        EXPECT_TRUE(BeginStoreChange());
        EXPECT_FALSE(BeginStoreChange());
        EXPECT_TRUE(remove(u"A"));
        if (lost)  // as SQLite may do on a full disk
            sql("ROLLBACK");
        EXPECT_EQ(create(u"B") != 0, !lost);
        if (!lost)
            add(OpenDatabase(u"B"), {text(1, u"b")});
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
    EXPECT_EQ(errorOf(EndStoreChange(TRUE)), ERROR_GEN_FAILURE);
    left(u"A", u"B");
    change(false);
    EXPECT_TRUE(EndStoreChange(TRUE));
    inKilledProcess([] {});
    left(u"B", u"A");
    EXPECT_EQ(recordsOf(u"B"), Records{{text(1, u"b")}});
    EXPECT_FALSE(EndStoreChange(TRUE));

    inKilledProcess([] {
        EXPECT_TRUE(BeginStoreChange());
        create(u"C");
        const OpenDatabase kept(u"C");
        for (const bool last : {false, true}) {  // the same handle is used in the next change
            add(kept, {text(1, u"c")});
            EXPECT_TRUE(EndStoreChange(TRUE));
            EXPECT_TRUE(last || BeginStoreChange());
        }
    });
    EXPECT_EQ(recordsOf(u"C").size(), 2U);
}

TEST_F(GatheringTest, ThreadsWithSeparateHandlesLoseNoChange)
{
    create(u"A");
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([] {
            const OpenDatabase database(u"A", CEDB_AUTOINCREMENT);
            for (LONG i = 0; i < 50; ++i) {
                add(database, {number(1, CEVT_I4, i)});
                CeSeekDatabase(database, CEDB_SEEK_END, 1, nullptr);
                read(database);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(recordsOf(u"A").size(), 150U);
}

TEST_F(GatheringTest, DamagedRecordIsRefusedAndCostsOnlyItself)
{
    create(u"A");
    const CEOID first = add(OpenDatabase(u"A"), {text(1, u"text"), blob(2, "bytes")});
    add(OpenDatabase(u"A"), {text(1, u"sound")});
    const std::string oid = std::to_string(first);
    for (const std::string bytes : {"X'01'", "X'010002000000'", "X'1F00010000000500000041'", "X'4100010000000FFFFFFF'",
                                    "X'41000100000000000000FF'"}) {
        SCOPED_TRACE(bytes);
        sql("UPDATE store_record SET properties = " + bytes + " WHERE oid = " + oid);
        const OpenDatabase reader(u"A", CEDB_AUTOINCREMENT);
        EXPECT_EQ(errorOf(!read(reader).empty()), ERROR_GEN_FAILURE);
        EXPECT_EQ(write(reader, first, {text(1, u"new")}), 0U);
        EXPECT_NE(CeSeekDatabase(reader, CEDB_SEEK_CURRENT, 1, nullptr), 0U);
        EXPECT_EQ(read(reader), Record{text(1, u"sound")});
    }
}

}  // namespace
