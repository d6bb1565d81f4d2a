#include "set/list_file.h"

#include "set_fixture.h"

namespace {

// docs/format.md's own example: the comment "Hi" and the database X with 100 bytes of stream.
const Bytes exampleHead = hex("03 00 00 00  48 00 69 00 00 00");
const Bytes exampleEntry = hex("02 01  02 00 00 00  58 00 00 00  00 00 00 00  64 00 00 00");

// Two files, a database and the registry, whose name is the last item's.
const Bytes fourItems = hex("01 00 00 00  00 00"
                            "01 01  03 00 00 00  5C 00 61 00 00 00  00 00 00 00  0C 00 00 00"
                            "01 01  04 00 00 00  5C 00 62 00 63 00 00 00  0C 00 00 00  20 00 00 00"
                            "02 01  02 00 00 00  58 00 00 00  20 00 00 00  30 00 00 00"
                            "03 01  02 00 00 00  58 00 00 00  30 00 00 00  00 00 00 80");

class ListFileTest : public SetTest {};

void countFailure(void* context)
{
    ++*static_cast<DWORD*>(context);
}

// Everything of the example list by the writers; returns the failures that they told.
DWORD writeExample(const WCHAR* path)
{
    const HANDLE list = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD failures = 0;
    DWORD told = 0;
    failures += WriteListHead(list, u"Hi") ? 0 : 1;
    const DWORD failedWrites = WriteEntryHead(list, ItemKindDatabase, u"X", 0, countFailure, &told);
    EXPECT_EQ(failedWrites, told);
    failures += failedWrites;
    failures += WriteEntryEnd(list, 100) ? 0 : 1;
    CloseHandle(list);
    return failures;
}

TEST_F(ListFileTest, WritersGiveTheBytesOfTheFormat)
{
    EXPECT_EQ(writeExample(u"\\A.QLT"), 0U);
    EXPECT_EQ(read(u"\\A.QLT"), exampleHead + exampleEntry);
}

TEST_F(ListFileTest, EveryWriteThatAFullCardCutsIsTold)
{
    const std::size_t ends[] = {10, 11, 12, 16, 20, 24, 28};  // of the head, of each field of the entry
    for (std::uint64_t capacity = 0; capacity <= 28; capacity++) {
        SCOPED_TRACE(capacity);
        addCard(capacity);
        const auto fitting = std::count_if(std::begin(ends), std::end(ends), [&](auto end) { return end <= capacity; });
        EXPECT_EQ(writeExample(u"\\Card\\A.QLT"), 7U - static_cast<DWORD>(fitting));
        Bytes written = exampleHead + exampleEntry;
        written.resize(capacity);
        EXPECT_EQ(read(u"\\Card\\A.QLT"), written);
    }
}

TEST_F(ListFileTest, EachKindLoadsIntoItsPlaceWithOffsetsUpTo4GiB)
{
    write(u"\\A.QLT", fourItems);
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(itemsOf(gFileList), (std::vector<LoadedItem>{{u"\\a", 0, 12}, {u"\\bc", 12, 32}}));
    EXPECT_EQ(itemsOf(gDatabaseList), (std::vector<LoadedItem>{{u"X", 32, 48}}));
    EXPECT_EQ(gRegistryMarked, 1U);
    EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), 48U);
    EXPECT_EQ(EntryEndOffset(gRegistryEntry.bytes), 0x80000000U);
    EXPECT_EQ(gFileList->id, FileListId);
    EXPECT_EQ(gDatabaseList->id, DatabaseListId);

    write(u"\\B.QLT", exampleHead + exampleEntry);
    ASSERT_TRUE(LoadList(u"\\B.QLT"));
    EXPECT_EQ(blobsOf(*gDatabaseList), Blobs{hex("58 00 00 00  00 00 00 00  64 00 00 00")});
    EXPECT_TRUE(gFileList->IsEmpty()) << "what was loaded before is gone";
    EXPECT_EQ(std::u16string(gComment), u"Hi");
}

TEST_F(ListFileTest, RegistryMarkIsLeftAloneByAListWithoutRegistry)
{
    write(u"\\A.QLT", exampleHead);
    for (const DWORD marked : {0U, 1U}) {
        gRegistryMarked = marked;
        ASSERT_TRUE(LoadList(u"\\A.QLT"));
        EXPECT_EQ(gRegistryMarked, marked);
    }
    EXPECT_TRUE(gFileList->IsEmpty());
    EXPECT_TRUE(gDatabaseList->IsEmpty());
}

TEST_F(ListFileTest, UnknownKindIsTheRegistryAndTheLaterRegistryWins)
{
    write(u"\\A.QLT", fourItems + hex("07 01  01 00 00 00  00 00  11 00 00 00  22 00 00 00"));
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), 0x11U);
    EXPECT_EQ(EntryEndOffset(gRegistryEntry.bytes), 0x22U);
}

TEST_F(ListFileTest, FilterKeepsOnlyWhatWasPicked)
{
    write(u"\\A.QLT", fourItems);
    const EntryFilter onlyBc = [](BYTE kind, const WCHAR* name, void*) {
        return kind == ItemKindFile && std::u16string(name) == u"\\bc";
    };
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    ASSERT_EQ(gRegistryMarked, 1U);
    ASSERT_TRUE(LoadList(u"\\A.QLT", onlyBc));
    EXPECT_EQ(itemsOf(gFileList), (std::vector<LoadedItem>{{u"\\bc", 12, 32}}));
    EXPECT_TRUE(gDatabaseList->IsEmpty());
    EXPECT_EQ(gRegistryMarked, 0U) << "the registry wasn't picked";
}

TEST_F(ListFileTest, ListThatCannotBeOpenedChangesNothing)
{
    gFileList->Add(u"\\a", 6);
    gRegistryMarked = 1;
    CopyText(gComment, u"old");
    EXPECT_FALSE(LoadList(u"\\none.QLT"));
    EXPECT_EQ(gFileList->Count(), 1U);
    EXPECT_EQ(gRegistryMarked, 1U);
    EXPECT_EQ(std::u16string(gComment), u"old");
}

// Longer than any buffer that a reader may have, with fields at every place in it.
TEST_F(ListFileTest, LongListComesBackEntryForEntry)
{
    const HANDLE list = CreateFileW(u"\\A.QLT", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    WriteListHead(list, std::u16string(259, u'c').c_str());
    std::vector<LoadedItem> expected;
    for (DWORD i = 0; i < 1000; i++) {
        expected.push_back({u"\\" + std::u16string(i % 259, static_cast<WCHAR>(u'a' + i % 20)), i, i + 1});
        WriteEntryHead(list, ItemKindFile, expected.back().name.c_str(), i, nullptr, nullptr);
        WriteEntryEnd(list, i + 1);
    }
    CloseHandle(list);
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(itemsOf(gFileList), expected);
    EXPECT_EQ(std::u16string(gComment), std::u16string(259, u'c'));
}

TEST_F(ListFileTest, DataFileIsNamedByTheLastThreeCharacters)
{
    const auto dataPath = [](const WCHAR* list) {
        WCHAR path[MAX_PATH];
        DataPathOfList(path, list);
        return std::u16string(path);
    };
    EXPECT_EQ(dataPath(u"\\Card\\QUILBOX\\QLBX0001.QLT"), u"\\Card\\QUILBOX\\QLBX0001.QDT");
    EXPECT_EQ(dataPath(u"QLT"), u"QDT");
    EXPECT_EQ(dataPath(u"LT"), u"");
}

}  // namespace
