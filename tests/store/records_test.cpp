// Records: values, the pointer, seeks, changes.

#include "store_fixture.h"

namespace {

using platform::database::DatabaseUse;
using platform::database::Step;

class RecordsTest : public StoreTest {
protected:
    RecordsTest() { create(u"A"); }

    // Adds records, each with its number as the only property.
    static std::vector<CEOID> addNumbered(HANDLE database, WORD records)
    {
        std::vector<CEOID> oids;
        for (WORD i = 0; i < records; ++i)
            oids.push_back(add(database, {number(1, CEVT_UI2, i)}));
        return oids;
    }
};

TEST_F(RecordsTest, ValuesThatATextFormWouldLoseAreReadBackBitForBit)
{
    const Record record = {
        number(1, CEVT_UI4, ULONG{0xFFFFFFFF}, 0xFCFF),
        number(2, CEVT_R8, std::uint64_t{0x7FF0000000000001}),  // a signaling NaN
        number(3, CEVT_BOOL, BOOL{-1}),
        text(4, {0xD800, u'x', 0xDC00, 0xFFFF, 1}),
        blob(5, std::string("\0\1\2", 3)),
        {propertyId(6, 999), "sixteen bytes of", 1},
        blob(7, std::string(300000, 'x')),
    };
    create(u"B", 0, {record});
    close();
    open();
    EXPECT_EQ(recordsOf(u"B"), Records{record});
}

TEST_F(RecordsTest, WriteReplacesAddsAndDeletesPropertiesAndKeepsTheOthers)
{
    const OpenDatabase database(u"A");
    const CEOID oid = add(database, {text(1, u"one"), text(2, u"two"), text(3, u"three")});
    EXPECT_EQ(write(database, oid, {text(2, u"other"), text(1, u"", CEDB_PROPDELETE), text(4, u"four"), text(4, u"4")}),
              oid);
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(2, u"other"), text(3, u"three"), text(4, u"4")}}));
    // A record stays when its last property is deleted.
    write(database, oid, {text(2, u"", CEDB_PROPDELETE), text(3, u"", CEDB_PROPDELETE), text(4, u"", CEDB_PROPDELETE)});
    EXPECT_EQ(recordsOf(u"A"), Records{{}});

    CEPROPVAL noText = {propertyId(1, CEVT_LPWSTR), 0, 0, {}};
    noText.val.lpwstr = nullptr;
    CEPROPVAL noBlob = {propertyId(1, CEVT_BLOB), 0, 0, {}};
    noBlob.val.blob = {1, nullptr};
    for (const CEOID target : {CEOID{0}, oid, oid + 1, CEOID{1}}) {
        for (auto [bad, count] : {std::pair{noText, WORD{1}}, {noText, WORD{0}}, {noBlob, WORD{1}}}) {
            EXPECT_EQ(errorOf(CeWriteRecordProps(database, target, count, &bad) != 0), ERROR_INVALID_PARAMETER);
        }
    }
    EXPECT_EQ(recordsOf(u"A"), Records{{}});
}

TEST_F(RecordsTest, NotFoundFlagIsNotStoredWithAProperty)
{
    const OpenDatabase database(u"A");
    const CEOID oid = add(database, {text(1, u"one", CEDB_PROPNOTFOUND), text(2, u"two", CEDB_PROPNOTFOUND | 5)});
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(1, u"one"), text(2, u"two", 5)}}));
    // A file of an earlier version can contain the flag. A write of another property doesn't bring the flag back.
    ASSERT_EQ(
        DatabaseUse()->execute("UPDATE store_record SET properties = x'1F0001000001000000001F0002000502000000001F000300"
                               "010000000000'"),
        Step::Done);
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(1, u""), text(2, u"", 5), text(3, u"", 1)}}));
    write(database, oid, {text(2, u"", CEDB_PROPDELETE)});
    EXPECT_EQ(recordsOf(u"A"), (Records{{text(1, u""), text(3, u"", 1)}}));
}

TEST_F(RecordsTest, RecordOfAnotherDatabaseIsRefused)
{
    create(u"B");
    const OpenDatabase a(u"A");
    const OpenDatabase b(u"B");
    const CEOID foreign = add(b, {text(1, u"b")});
    DWORD index = 0;
    EXPECT_EQ(write(a, foreign, {text(1, u"a")}), 0U);
    EXPECT_FALSE(CeDeleteRecord(a, foreign));
    EXPECT_EQ(errorOf(CeSeekDatabase(a, CEDB_SEEK_CEOID, foreign, &index) != 0), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(read(a).empty());
    EXPECT_EQ(recordsOf(u"B"), Records{{text(1, u"b")}});
}

TEST_F(RecordsTest, ReadingAndDeletingInTurnMeetsEveryRecordOnlyWithAutoincrement)
{
    for (const DWORD flags : {CEDB_AUTOINCREMENT, DWORD{0}}) {
        const auto oids = addNumbered(OpenDatabase(u"A"), 40);
        const OpenDatabase again(u"A", flags);
        std::vector<CEOID> met;
        for (CEOID oid = 0; read(again, &oid), oid != 0;) {
            met.push_back(oid);
            EXPECT_TRUE(CeDeleteRecord(again, oid));
        }
        if (flags == CEDB_AUTOINCREMENT) {
            EXPECT_EQ(met, oids);
            EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
        } else {
            EXPECT_EQ(met, std::vector{oids.front()});
            EXPECT_EQ(GetLastError(), ERROR_KEY_DELETED);
            EXPECT_EQ(CeSeekDatabase(again, CEDB_SEEK_CURRENT, 0, nullptr), oids[1]);
        }
    }
}

TEST_F(RecordsTest, DeletionThroughAnotherHandleKeepsThePointerOnItsRecord)
{
    const OpenDatabase reader(u"A", CEDB_AUTOINCREMENT);
    const OpenDatabase other(u"A");
    const auto oids = addNumbered(other, 5);
    DWORD index = 0;
    EXPECT_EQ(CeSeekDatabase(reader, CEDB_SEEK_BEGINNING, 2, &index), oids[2]);
    CeDeleteRecord(other, oids[0]);
    CeDeleteRecord(other, oids[2]);
    CEOID oid = 0;
    EXPECT_EQ(read(reader, &oid), Record{number(1, CEVT_UI2, WORD{3})});
    EXPECT_EQ(CeSeekDatabase(reader, CEDB_SEEK_CURRENT, 0, &index), oids[4]);
    EXPECT_EQ(index, 2U);
    EXPECT_EQ(CeSeekDatabase(reader, CEDB_SEEK_CURRENT, static_cast<DWORD>(-2), &index), oids[1]);
    EXPECT_EQ(index, 0U);
}

TEST_F(RecordsTest, SeekReturnsTheRecordAndItsPosition)
{
    const HANDLE database = opened(u"A");
    DWORD end = 99;
    EXPECT_EQ(CeSeekDatabase(database, CEDB_SEEK_END, 0, &end), 0U);
    EXPECT_EQ(end, 0U);
    const auto oids = addNumbered(database, 10);
    EXPECT_EQ(CeSeekDatabase(database, CEDB_SEEK_END, 0, &end), 0U);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(end, 10U);
    EXPECT_EQ(errorOf(!read(database).empty()), ERROR_NO_MORE_ITEMS);
    const DWORD last = 0xFFFFFFFF;
    // The kind and distance of the seek, and the position after it. -1: the seek is refused.
    const std::tuple<DWORD, DWORD, int> cases[] = {
        {CEDB_SEEK_BEGINNING, 0, 0},     {CEDB_SEEK_CURRENT, 4, 4},
        {CEDB_SEEK_CURRENT, last, 3},    {CEDB_SEEK_BEGINNING, 9, 9},
        {CEDB_SEEK_END, 1, 9},           {CEDB_SEEK_END, 10, 0},
        {CEDB_SEEK_CEOID, oids[6], 6},   {CEDB_SEEK_CURRENT, 0, 6},
        {CEDB_SEEK_CURRENT, last, 5},    {CEDB_SEEK_CURRENT, 1, 6},
        {CEDB_SEEK_END, 11, -1},         {CEDB_SEEK_CURRENT, 0, 6},
        {CEDB_SEEK_CURRENT, 4, -1},      {CEDB_SEEK_CURRENT, last, 9},
        {CEDB_SEEK_BEGINNING, 10, -1},   {CEDB_SEEK_CURRENT, 0, -1},
        {CEDB_SEEK_END, 3, 7},           {CEDB_SEEK_CEOID, 1, -1},
        {CEDB_SEEK_CURRENT, 1, 8},       {CEDB_SEEK_CURRENT, 0x80000000, -1},
        {CEDB_SEEK_BEGINNING, last, -1}, {0x10, 0, -1},
    };
    for (const auto& [how, value, position] : cases) {
        SCOPED_TRACE(testing::Message() << how << " " << value);
        DWORD index = 0xFFFFFFFF;
        EXPECT_EQ(CeSeekDatabase(database, how, value, &index), position < 0 ? 0 : oids[static_cast<DWORD>(position)]);
        EXPECT_TRUE(position < 0 || index == static_cast<DWORD>(position)) << index;
    }
    CloseHandle(database);
    EXPECT_EQ(errorOf(CeSeekDatabase(database, CEDB_SEEK_END, 1, nullptr) != 0), ERROR_INVALID_PARAMETER);
}

TEST_F(RecordsTest, BufferThatIsTooSmallIsLeftAloneOrReplaced)
{
    const OpenDatabase database(u"A");
    add(database, {text(1, u"some text"), number(2, CEVT_I4, LONG{5})});
    auto* buffer = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, 8));
    BYTE* const first = buffer;
    DWORD bytes = 8;
    WORD count = 0;
    const auto read = [&](DWORD flags, const CEPROPID* asked = nullptr) {
        return CeReadRecordProps(database, flags, &count, asked, &buffer, &bytes) != 0;
    };
    EXPECT_EQ(errorOf(read(0)), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(buffer, first);
    EXPECT_TRUE(read(CEDB_ALLOWREALLOC));
    EXPECT_EQ(count, 2);
    EXPECT_GE(bytes, 2 * sizeof(CEPROPVAL) + 20);
    EXPECT_TRUE(read(0)) << "as large as needed is large enough";

    const CEPROPID asked[] = {propertyId(9, CEVT_BLOB), propertyId(2, CEVT_I4)};
    ASSERT_TRUE(read(0, asked));
    const auto* values = reinterpret_cast<const CEPROPVAL*>(buffer);
    EXPECT_EQ(values[0].propid, asked[0]);
    EXPECT_EQ(values[0].wFlags, CEDB_PROPNOTFOUND);
    EXPECT_EQ(values[0].val.blob.dwCount, 0U);
    EXPECT_EQ(values[1].val.lVal, 5);
    count = 1;
    EXPECT_EQ(errorOf(read(0, asked)), ERROR_NO_DATA);
    LocalFree(buffer);
}

TEST_F(RecordsTest, FullDatabaseRefusesTheNextRecordAndKeepsTheOthers)
{
    const Record record = {number(1, CEVT_I4, LONG{1})};
    create(u"B", 0, Records(CEDB_MAXRECORDS, record));
    EXPECT_EQ(errorOf(add(OpenDatabase(u"B"), record) != 0), ERROR_DISK_FULL);
    EXPECT_EQ(infoOf(u"B").wNumRecords, 0xFFFF);
    EXPECT_EQ(recordsOf(u"B").size(), 0xFFFFU);
}

}  // namespace
