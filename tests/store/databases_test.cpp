// Databases as a whole: names, enumeration, information, deletion.

#include "store_fixture.h"

#include <algorithm>

namespace {

using DatabasesTest = StoreTest;

std::vector<CEOID> walk(DWORD type)
{
    std::vector<CEOID> oids;
    const HANDLE enumeration = CeFindFirstDatabase(type);
    EXPECT_NE(enumeration, INVALID_HANDLE_VALUE);
    while (const CEOID oid = CeFindNextDatabase(enumeration))
        oids.push_back(oid);
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
    EXPECT_TRUE(CloseHandle(enumeration));
    return oids;
}

TEST_F(DatabasesTest, WalkMeetsEachDatabaseOfItsTypeUntilOneIsDeleted)
{
    EXPECT_TRUE(walk(0).empty());
    const CEOID contacts = create(u"Contacts", 24);
    const CEOID tasks = create(u"Tasks", 27);
    EXPECT_EQ(walk(0), (std::vector{contacts, tasks}));
    EXPECT_EQ(walk(27), std::vector{tasks});
    EXPECT_TRUE(walk(1).empty());

    const HANDLE enumeration = CeFindFirstDatabase(0);
    ASSERT_EQ(CeFindNextDatabase(enumeration), contacts);
    ASSERT_TRUE(CeDeleteDatabase(contacts));
    EXPECT_EQ(errorOf(CeFindNextDatabase(enumeration) != 0), ERROR_KEY_DELETED);
    EXPECT_TRUE(CloseHandle(enumeration));
    EXPECT_EQ(errorOf(CeFindNextDatabase(enumeration) != 0), ERROR_INVALID_PARAMETER);
}

TEST_F(DatabasesTest, NameIsFoundWithoutCaseAndKeptAsWrittenUpToALimit)
{
    const CEOID oid = create(u"Ärger");
    SetLastError(99);
    EXPECT_EQ(errorOf(create(u"äRGER") != 0), ERROR_DUP_NAME);
    EXPECT_EQ(std::u16string(infoOf(u"ärgeR").szDbaseName), u"Ärger");

    SetLastError(99);
    EXPECT_NE(create(std::u16string(30, u'n') + u"\xD83D\xDE00 and more"), oid);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(std::u16string(infoOf(std::u16string(30, u'N') + u"\xD83D\xDE00").szDbaseName), std::u16string(30, u'n'));
    EXPECT_EQ(create(std::u16string(30, u'n')), 0U);

    for (const std::u16string name : {u"", u"half \xD83D", u"\xDE00"}) {
        EXPECT_EQ(errorOf(create(name) != 0), ERROR_INVALID_PARAMETER);
    }
    CEOID none = 0;
    EXPECT_EQ(errorOf(CeOpenDatabase(&none, u"nowhere", 0, 0, nullptr) != INVALID_HANDLE_VALUE), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(errorOf(CeOpenDatabase(&none, nullptr, 0, 0, nullptr) != INVALID_HANDLE_VALUE), ERROR_INVALID_PARAMETER);
}

TEST_F(DatabasesTest, TypeSortOrdersAndCountsAreKept)
{
    const SORTORDERSPEC specs[] = {{0x10003, CEDB_SORT_DESCENDING}, {0xFFFF001F, 0xFFFFFFFF}, {3, 4}, {5, 6}, {7, 8}};
    EXPECT_EQ(errorOf(CeCreateDatabase(u"five", 1, 5, specs) != 0), ERROR_INVALID_PARAMETER);
    ASSERT_NE(CeCreateDatabase(u"four", 0xFFFFFFFF, 4, specs), 0U);
    ASSERT_NE(create(u"none"), 0U);

    const CEOID record = add(OpenDatabase(u"four"), {blob(1, "12345")});
    add(OpenDatabase(u"four"), {blob(1, "12345")});
    close();
    open();

    const CEDBASEINFO four = infoOf(u"four");
    EXPECT_EQ(four.dwDbaseType, 0xFFFFFFFF);
    ASSERT_EQ(four.wNumSortOrder, 4);
    EXPECT_TRUE(
        std::equal(specs, specs + 4, four.rgSortSpecs, [](const SORTORDERSPEC& left, const SORTORDERSPEC& right) {
            return left.propid == right.propid && left.dwFlags == right.dwFlags;
        }));
    EXPECT_EQ(four.wNumRecords, 2);
    EXPECT_GE(four.dwSize, 10U);
    EXPECT_NE(four.ftLastModified.dwHighDateTime, 0U);
    const CEDBASEINFO none = infoOf(u"none");
    EXPECT_EQ(none.wNumSortOrder, 1);
    EXPECT_EQ(none.rgSortSpecs[0].propid, 0U);
    EXPECT_EQ(none.dwSize, 0U);

    CEOIDINFO info = {};
    ASSERT_TRUE(CeOidGetInfo(record, &info));
    EXPECT_EQ(info.wObjType, OBJTYPE_RECORD);
    ASSERT_TRUE(CeOidGetInfo(info.infRecord.oidParent, &info));
    EXPECT_EQ(std::u16string(info.infDatabase.szDbaseName), u"four");
    EXPECT_EQ(errorOf(CeOidGetInfo(record + 100, &info)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(errorOf(CeOidGetInfo(record, nullptr)), ERROR_INVALID_PARAMETER);
}

TEST_F(DatabasesTest, OpenDatabaseIsNotDeletedAndNoOidIsUsedTwice)
{
    CEOID oid = create(u"A");
    const HANDLE first = CeOpenDatabase(&oid, u"a name that the oid overrides", 0, 0, nullptr);
    const HANDLE second = opened(u"A");
    const CEOID record = add(first, {blob(1, "")});
    CloseHandle(first);
    EXPECT_EQ(errorOf(CeDeleteDatabase(oid)), ERROR_SHARING_VIOLATION);
    CloseHandle(second);
    EXPECT_TRUE(CeDeleteDatabase(oid));
    EXPECT_EQ(errorOf(CeDeleteDatabase(oid)), ERROR_INVALID_PARAMETER);
    CEOIDINFO info = {};
    EXPECT_FALSE(CeOidGetInfo(record, &info));

    EXPECT_NE(create(u"A"), oid);
    EXPECT_GT(add(OpenDatabase(u"A"), {blob(1, "")}), record);
}

TEST_F(DatabasesTest, CallsFailWithoutADeviceAndOldHandlesFailOnTheNextOne)
{
    create(u"A");
    const HANDLE database = opened(u"A");
    close();
    EXPECT_EQ(errorOf(CeFindFirstDatabase(0) != INVALID_HANDLE_VALUE), ERROR_GEN_FAILURE);
    EXPECT_EQ(errorOf(create(u"B") != 0), ERROR_GEN_FAILURE);
    open();
    EXPECT_EQ(errorOf(add(database, {blob(1, "")}) != 0), ERROR_INVALID_PARAMETER);
}

}  // namespace
