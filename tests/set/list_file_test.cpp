#include "set/list_file.h"

#include "set_fixture.h"

#include <algorithm>

namespace {

// docs/format.md's own example: the comment "Hi" and the database X with 100 bytes of stream.
const Bytes exampleHead = hex("03 00 00 00  48 00 69 00 00 00");
const Bytes exampleEntry = hex("02 01  02 00 00 00  58 00 00 00  00 00 00 00  64 00 00 00");

// Two files, a database and the registry, whose entry has the name of the item before.
const Bytes fourItems = hex("01 00 00 00  00 00") + entryBytes(1, "\\a", 0, 12) + entryBytes(1, "\\bc", 12, 32) +
                        entryBytes(2, "X", 32, 48) + entryBytes(3, "X", 48, 0x80000000);

class ListFileTest : public SetTest {};

void countFailure(void* context)
{
    ++*static_cast<DWORD*>(context);
}

// Writes the example and returns the number of failures that the writers report.
DWORD writeExample(HANDLE list)
{
    DWORD reported = 0;
    DWORD failures = WriteListHead(list, u"Hi") ? 0 : 1;
    const DWORD failedWrites = WriteEntryHead(list, ItemKindDatabase, u"X", 0, countFailure, &reported);
    EXPECT_EQ(failedWrites, reported);
    failures += failedWrites;
    failures += WriteEntryEnd(list, 100) ? 0 : 1;
    return failures;
}

TEST_F(ListFileTest, WritersGiveTheFormatAndReportEachWriteThatAFullCardCuts)
{
    const std::size_t ends[] = {10, 11, 12, 16, 20, 24, 28};  // of the head and of each field of the entry
    for (std::uint64_t capacity = 0; capacity <= 28; capacity++) {
        SCOPED_TRACE(capacity);
        addCard(capacity);
        const HANDLE list = open(u"\\Card\\A.QLT", GENERIC_WRITE, CREATE_NEW);
        EXPECT_EQ(writeExample(list), std::ranges::count_if(ends, [&](auto end) { return end > capacity; }));
        CloseHandle(list);
        Bytes written = exampleHead + exampleEntry;
        written.resize(capacity);
        EXPECT_EQ(read(u"\\Card\\A.QLT"), written);
    }
}

TEST_F(ListFileTest, EachKindIsLoadedWithOffsetsUpTo4GiB)
{
    make(u"\\A.QLT", fourItems);
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(itemsOf(gFileList), (std::vector<LoadedItem>{{u"\\a", 0, 12}, {u"\\bc", 12, 32}}));
    EXPECT_EQ(itemsOf(gDatabaseList), (std::vector<LoadedItem>{{u"X", 32, 48}}));
    EXPECT_EQ(gRegistryMarked, 1U);
    EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), 48U);
    EXPECT_EQ(EntryEndOffset(gRegistryEntry.bytes), 0x80000000U);
    EXPECT_EQ(gFileList->id, FileListId);
    EXPECT_EQ(gDatabaseList->id, DatabaseListId);

    make(u"\\B.QLT", exampleHead + exampleEntry);
    ASSERT_TRUE(LoadList(u"\\B.QLT"));
    EXPECT_EQ(blobsOf(*gDatabaseList), Blobs{hex("58 00 00 00  00 00 00 00  64 00 00 00")});
    EXPECT_TRUE(gFileList->IsEmpty()) << "the items of the set before are removed";
    EXPECT_EQ(std::u16string(gComment), u"Hi");
    EXPECT_EQ(gRegistryMarked, 1U) << "a list without a registry leaves the mark";

    // An unknown kind is the registry, and the later registry counts.
    make(u"\\A.QLT", fourItems + hex("07 01  01 00 00 00  00 00  11 00 00 00  22 00 00 00"));
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), 0x11U);
    EXPECT_EQ(EntryEndOffset(gRegistryEntry.bytes), 0x22U);

    const EntryFilter onlyBc = [](BYTE kind, const WCHAR* name, void*) {
        return kind == ItemKindFile && std::u16string(name) == u"\\bc";
    };
    ASSERT_TRUE(LoadList(u"\\A.QLT", onlyBc));
    EXPECT_EQ(itemsOf(gFileList), (std::vector<LoadedItem>{{u"\\bc", 12, 32}}));
    EXPECT_TRUE(gDatabaseList->IsEmpty());
    EXPECT_EQ(gRegistryMarked, 0U) << "the filter refused the registry";
    ASSERT_TRUE(LoadList(u"\\B.QLT"));
    EXPECT_EQ(gRegistryMarked, 0U);

    gRegistryMarked = 1;
    EXPECT_FALSE(LoadList(u"\\none.QLT"));
    EXPECT_EQ(gDatabaseList->Count() + gRegistryMarked, 2U) << "a list that can't be opened changes nothing";
    EXPECT_EQ(std::u16string(gComment), u"Hi");
}

// Longer than the buffer of a reader, whose end falls on different fields.
TEST_F(ListFileTest, LongListComesBackEntryForEntry)
{
    const HANDLE list = open(u"\\A.QLT", GENERIC_WRITE, CREATE_NEW);
    WriteListHead(list, std::u16string(259, u'c').c_str());
    std::vector<LoadedItem> expected;
    for (DWORD i = 0; i < 1000; i++) {
        const std::u16string name = u"\\" + std::u16string(i % 259, static_cast<WCHAR>(u'a' + i % 20));
        expected.emplace_back(name, i, i + 1);
        WriteEntryHead(list, ItemKindFile, name.c_str(), i, nullptr, nullptr);
        WriteEntryEnd(list, i + 1);
    }
    CloseHandle(list);
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(itemsOf(gFileList), expected);
    EXPECT_EQ(std::u16string(gComment), std::u16string(259, u'c'));
}

}  // namespace
