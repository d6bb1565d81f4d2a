// When the disk is full, memory runs out or a record is too large, a restore fails and keeps the old database. If there
// is an old database, a kill at any call leaves either the old or the new database whole. If there is none, the kill
// can leave a new database that has only the first records.

#include "failing_memory.h"
#include "image_fixture.h"
#include "kernel/troubles.h"
#include "killed_process.h"

#include "database/connection.h"

namespace {

using platform::database::DatabaseUse;
using platform::kernel::Trouble;
using platform::kernel::Troubled;

class RestoreFaultTest : public DatabaseImageTest {
protected:
    RestoreFaultTest() { gQuestions.yes = true; }

    // Returns the golden image with a third record.
    static std::string imageWith(const std::string& record)
    {
        std::string bytes = goldenImage;
        bytes[14] = '\3';
        return bytes + record;
    }
    // Returns a record of blobs of these sizes.
    static std::string recordOf(const std::vector<DWORD>& blobs)
    {
        std::string record{static_cast<char>(blobs.size()), '\0'};
        for (const DWORD bytes : blobs) {
            record += std::string("\x41\0\1\0", 4) + std::string(reinterpret_cast<const char*>(&bytes), sizeof bytes);
            record += std::string(bytes, 'z') + std::string(2, '\0');
            record[record.size() - bytes - 8] = static_cast<char>(record.size());  // a different id for each
        }
        return record;
    }
};

TEST_F(RestoreFaultTest, FullDiskLeavesTheOldDatabaseWholeAndIsReported)
{
    makeOld(u"Ab");
    const std::string bytes = imageWith(recordOf({40'000}));
    std::int64_t pages = DatabaseUse()->readNumber("PRAGMA page_count").value();
    int refused = 0;
    RestoreResult result = RestoreFailed;
    for (; result == RestoreFailed && refused < 100; ++pages) {
        SCOPED_TRACE(pages);
        ASSERT_LE(DatabaseUse()->readNumber("PRAGMA page_count").value_or(0), pages);
        (void)DatabaseUse()->execute("PRAGMA max_page_count = " + std::to_string(pages));
        result = restore(bytes);
        ASSERT_EQ(GetLastError(), result == RestoreFailed ? ERROR_DISK_FULL : ERROR_SUCCESS);
        close();  // and opens it again, as the next start of the program does
        open();
        refused += result == RestoreFailed ? 1 : 0;
        ASSERT_EQ(isOld(u"Ab"), result == RestoreFailed);
    }
    EXPECT_EQ(result, RestoreDone);
    EXPECT_GT(refused, 5);
    const auto noted = troublesOf(Trouble::Writing, Troubled::Database);
    ASSERT_FALSE(noted.empty());
    EXPECT_EQ(noted.front().name, u"Ab");
    EXPECT_EQ(noted.front().error, ERROR_DISK_FULL);
    EXPECT_EQ(recordsOf(u"Ab").size(), 3U);
}

TEST_F(RestoreFaultTest, MemoryThatRunsOutAnywhereLeavesTheOldDatabaseWhole)
{
    std::string many{'\x2C', '\1'};  // 300 properties, which need a block of their own
    for (char i = 0; i < 100; ++i)
        many += repeated(std::string("\2\0", 2) + i + std::string("\7\5\0\0\0", 5), 3);
    const std::string bytes = imageWith(many);
    makeOld(u"Ab");
    static unsigned long refused;
    refused = 0;
    gQuestions.answered = [] { failAllocationsFrom(refused); };
    RestoreResult result = RestoreFailed;
    std::ofstream(root() / "Free.CDB", std::ios::binary) << bytes;  // the file's name differs from that of its database
    while (result == RestoreFailed && refused < 1000) {
        SCOPED_TRACE(refused);
        ++refused;
        result = RestoreDatabase(u"\\Free.CDB");
        const DWORD error = GetLastError();
        failAllocationsFrom(0);
        ASSERT_EQ(error, result == RestoreFailed ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS);
        ASSERT_EQ(isOld(u"Ab"), result == RestoreFailed);
    }
    EXPECT_EQ(result, RestoreDone);
    EXPECT_GT(refused, 5U);
    EXPECT_EQ(recordsOf(u"Ab").size(), 3U);
}

TEST_F(RestoreFaultTest, RecordThatIsTooLargeCostsNoOtherRecordAndNoOldDatabase)
{
    const DWORD half = MaxRecordContent / 2;
    const std::pair<std::vector<DWORD>, bool> cases[] = {
        {{MaxRecordContent}, true},
        {{MaxRecordContent + 1}, false},
        {{MaxRecordContent + 1, 3}, false},  // the rest of the record is skipped
        {{half, half}, true},
        {{half, half + 1}, false},
    };
    for (const auto& [blobs, fits] : cases) {
        SCOPED_TRACE(blobs.back());
        std::string bytes = imageWith(recordOf(blobs));
        bytes[14] = '\4';
        bytes += std::string("\1\0\2\0\1\0\5\0\0\0", 10);
        EXPECT_EQ(restore(bytes), fits ? RestoreDone : RestoreFailed);
        EXPECT_EQ(GetLastError(), fits ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
        const Records records = recordsOf(u"Ab");
        EXPECT_EQ(records.size(), fits ? 4U : 3U);
        EXPECT_EQ(records.back(), (Record{number(1, CEVT_I2, SHORT{5})}));
        Record record;
        for (const DWORD size : blobs)
            record.push_back(blob(static_cast<WORD>(record.size()), std::string(size, 'z')));
        EXPECT_EQ(add(OpenDatabase(u"Ab"), record) != 0, fits);
        ASSERT_TRUE(remove(u"Ab"));

        makeOld(u"Ab");
        EXPECT_EQ(restore(bytes), fits ? RestoreDone : RestoreFailed);
        EXPECT_EQ(isOld(u"Ab"), !fits);
        ASSERT_TRUE(remove(u"Ab"));
    }
}

constexpr DWORD OldType = 9;
constexpr DWORD NewType = 7;

class RestoreKillTest : public DatabaseImageTest {
protected:
    RestoreKillTest() { gQuestions.yes = true; }

    // Makes the image of these records, which are in the image's order. With `withOld` the device has an old database
    // "A".
    void prepare(Records records, bool withOld)
    {
        imaged_ = std::move(records);
        create(u"A", NewType, reversed(imaged_));
        ASSERT_TRUE(DumpDatabase(u"A"));
        ASSERT_TRUE(remove(u"A"));
        if (withOld)
            create(u"A", OldType, old_);
        create(u"Other", OldType);
        close();
        fs::copy_file(at("device.db"), at("before.db"));
    }
    // Returns false if the restore ended before the kill.
    [[nodiscard]] bool killedRestore(int calls) const
    {
        fs::remove(at("device.db-wal"));
        fs::copy_file(at("before.db"), at("device.db"), fs::copy_options::overwrite_existing);
        return killedBeforeCall(calls, [&] {
            open();
            _exit(RestoreDatabase(u"\\A.CDB") == RestoreDone ? 0 : 1);
        });
    }
    // Returns how many records of the image the database has, -1 for the old database, or -2 for none.
    [[nodiscard]] int found() const
    {
        open();  // checks every page of the database
        EXPECT_TRUE(exists(u"Other"));
        if (!exists(u"A"))
            return -2;
        const Records records = recordsOf(u"A");
        EXPECT_EQ(infoOf(u"A").wNumRecords, records.size());
        if (infoOf(u"A").dwDbaseType == OldType) {
            EXPECT_EQ(records, old_);
            return -1;
        }
        EXPECT_LE(records.size(), imaged_.size());
        EXPECT_TRUE(std::equal(records.begin(), records.end(), imaged_.begin()));
        return static_cast<int>(records.size());
    }
    [[nodiscard]] int whole() const { return static_cast<int>(imaged_.size()); }

private:
    const Records old_ = {{text(1, u"old")}, {blob(2, "old too")}};
    Records imaged_;
};

TEST_F(RestoreKillTest, KillAtAnyCallLeavesTheOldOrTheNewDatabaseWhole)
{
    Record large;  // too large for one write of the usual size
    for (WORD i = 0; i < 300; ++i)
        large.push_back(number(i, CEVT_I4, LONG{i}));
    prepare({{text(1, u"first"), number(2, CEVT_I4, LONG{1})},
             large,
             {blob(1, std::string(9000, 'b'))},
             {text(1, u"last")}},
            true);
    std::vector<int> seen;
    bool killed = true;
    for (int calls = 0; killed; ++calls) {
        SCOPED_TRACE(calls);
        killed = killedRestore(calls);
        seen.push_back(found());
        close();
        if (HasFailure())
            return;
    }
    const auto firstNew = std::find(seen.begin(), seen.end(), whole());
    EXPECT_EQ(std::count(seen.begin(), firstNew, -1), firstNew - seen.begin());
    EXPECT_EQ(std::count(firstNew, seen.end(), whole()), seen.end() - firstNew);
    EXPECT_NE(firstNew, seen.begin());
    EXPECT_NE(firstNew, seen.end());
}

TEST_F(RestoreKillTest, KillBetweenTwoFlushesOfANewDatabaseLosesOnlyItsLastRecords)
{
    Records records;
    for (char i = 'a'; i < 'e'; ++i)
        records.push_back({number(1, CEVT_UI2, WORD(i)), blob(2, std::string(3'000'000, i))});
    prepare(records, false);
    int between = 0;
    // The step has no common factor with the number of calls for a page. So the kills meet different calls.
    for (int calls = 1000; killedRestore(calls); calls += 1597) {
        SCOPED_TRACE(calls);
        const int state = found();
        close();
        between += state > 0 && state < whole() ? 1 : 0;
        if (HasFailure())
            return;
    }
    EXPECT_EQ(found(), whole());
    EXPECT_GT(between, 0);
}

}  // namespace
