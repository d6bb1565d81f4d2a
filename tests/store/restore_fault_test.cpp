// When the disk is full, memory runs out or a record is too large, a restore fails and keeps the old database.

#include "failing_memory.h"
#include "image_fixture.h"
#include "kernel/troubles.h"

#include "database/connection.h"
#include "database/device_database.h"

namespace {

using platform::database::DatabaseUse;
using platform::kernel::Trouble;
using platform::kernel::Troubled;

class RestoreFaultTest : public DatabaseImageTest {
protected:
    RestoreFaultTest() { gQuestions.yes = true; }

    // The golden image with a third record.
    static std::string imageWith(const std::string& record)
    {
        std::string bytes = goldenImage;
        bytes[14] = '\3';
        return bytes + record;
    }
    // A record of blobs of these sizes.
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
        close();  // as the next start finds it
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
    std::ofstream(root() / "Free.CDB", std::ios::binary) << bytes;  // whose name differs from that of its database
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
    struct Case {
        std::vector<DWORD> blobs;
        bool fits;
    };
    const Case cases[] = {
        {{MaxRecordContent}, true},
        {{MaxRecordContent + 1}, false},
        {{MaxRecordContent + 1, 3}, false},  // the rest of the record is stepped over
        {{half, half}, true},
        {{half, half + 1}, false},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.blobs.back());
        std::string bytes = imageWith(recordOf(each.blobs));
        bytes[14] = '\4';
        bytes += std::string("\1\0\2\0\1\0\5\0\0\0", 10);
        EXPECT_EQ(restore(bytes), each.fits ? RestoreDone : RestoreFailed);
        EXPECT_EQ(GetLastError(), each.fits ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
        const Records records = recordsOf(u"Ab");
        EXPECT_EQ(records.size(), each.fits ? 4U : 3U);
        EXPECT_EQ(records.back(), (Record{number(1, CEVT_I2, SHORT{5})}));
        Record record;
        for (const DWORD size : each.blobs)
            record.push_back(blob(static_cast<WORD>(record.size()), std::string(size, 'z')));
        EXPECT_EQ(add(OpenDatabase(u"Ab"), record) != 0, each.fits);
        ASSERT_TRUE(remove(u"Ab"));

        makeOld(u"Ab");
        EXPECT_EQ(restore(bytes), each.fits ? RestoreDone : RestoreFailed);
        EXPECT_EQ(isOld(u"Ab"), !each.fits);
        ASSERT_TRUE(remove(u"Ab"));
    }
}

}  // namespace
