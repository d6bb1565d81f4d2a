#include "set/list_file.h"

#include "set_fixture.h"

#include <algorithm>

namespace {

// docs/format.md's own example: the comment "Hi" and the database X with 100 bytes of stream.
const Bytes exampleHead = hex("03 00 00 00  48 00 69 00 00 00");
const Bytes exampleEntry = hex("02 01  02 00 00 00  58 00 00 00  00 00 00 00  64 00 00 00");

// Two files, a database and the registry. The registry's entry has the name of the previous item.
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
    const std::size_t ends[] = {10, 11, 12, 16, 20, 24, 28};  // the end of the head, and of each field of the entry
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

    // An entry of an unknown kind is read as the registry. Of two registry entries the later one applies.
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

// The list is longer than the buffer of a reader. The buffer's end falls on different fields.
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

const Bytes nul = hex("00 00");

// Returns a count and characters. The count can differ from the number of the characters.
Bytes counted(DWORD count, const Bytes& characters)
{
    return numberBytes(count) + characters;
}

Bytes entry(char kind, DWORD nameLength, const Bytes& name)
{
    return Bytes{kind, 1} + counted(nameLength, name) + hex("0C 00 00 00  18 00 00 00");
}

Bytes letters(std::size_t characters)
{
    return repeated(hex("78 00"), characters);
}

const Bytes head = counted(3, hex("48 00 69 00 00 00"));
const Bytes fileA = entryBytes(ItemKindFile, "\\a", 0, 12);
const Bytes fileB = entryBytes(ItemKindFile, "\\b", 12, 24);
const Bytes registry = entryBytes(ItemKindRegistry, "", 24, 36);

const LoadedItem itemA = {u"\\a", 0, 12};
const LoadedItem itemB = {u"\\b", 12, 24};
const std::u16string longestComment(259, u'x');

struct Fault {
    const char* name;
    Bytes list;
    std::vector<LoadedItem> files;
    std::u16string comment = u"Hi";
    DWORD registryStart = 0;
};

class ListDamageTest : public SetTest {};

TEST_F(ListDamageTest, DamagedEntryOrCommentOfAListLosesNoOtherEntry)
{
    const Fault faults[] = {
        {"name of 261 characters", head + entry(1, 261, letters(260) + nul) + fileB, {itemB}},
        {"name of 20000 characters", head + entry(1, 20000, letters(20000)) + fileB, {itemB}},
        {"name of 0 characters", head + entry(1, 0, {}) + fileB, {itemB}},
        {"name without NUL", head + entry(1, 2, hex("5C 00 63 00")) + fileB, {itemB}},
        {"name of 260 characters without NUL", head + entry(1, 260, letters(260)) + fileB, {itemB}},
        {"NUL inside a name", head + entry(1, 4, hex("5C 00  00 00  63 00  00 00")), {{u"\\", 12, 24}}},
        {"name beyond the file", head + fileA + entry(1, 0xFFFFFFFF, letters(3)), {itemA}},
        {"name whose bytes pass 4 GiB", head + fileA + entry(1, 0x80000000, {}), {itemA}},
        {"comment of 300 characters", counted(300, letters(299) + nul) + fileA, {itemA}, longestComment},
        {"comment of 260 characters without NUL", counted(260, letters(260)) + fileA, {itemA}, longestComment},
        {"comment cut inside a surrogate pair",
         counted(300, letters(258) + hex("3D D8 00 DE") + letters(39) + nul) + fileA,
         {itemA},
         std::u16string(258, u'x')},
        {"comment without NUL", counted(2, hex("48 00 69 00")) + fileA, {itemA}},
        {"comment of 0 characters", counted(0, {}) + fileA, {itemA}, u""},
        {"comment beyond the file", counted(0xFFFFFFFF, hex("48 00 69 00")), {}},
        {"nothing at all", {}, {}, u""},
        {"kind and flag alone", head + fileA + hex("01 01"), {itemA}},
        {"one byte after the registry", head + registry + hex("03 01 05"), {}, u"Hi", 0x18},
        {"zeros after the registry", head + fileA + registry + Bytes(40, '\0'), {itemA}, u"Hi", 0x18},
        {"registry without a name", head + registry + entry(3, 0, {}), {}, u"Hi", 0x0C},
        {"registry with a name of 300 characters", head + entry(3, 300, letters(300)) + fileA, {itemA}, u"Hi", 0x0C},
    };
    for (const auto& [name, list, files, comment, registryStart] : faults) {
        SCOPED_TRACE(name);
        gRegistryMarked = 0;
        gRegistryEntry = {};
        CopyText(gComment, u"of the set before");
        make(u"\\A.QLT", list);
        ASSERT_TRUE(LoadList(u"\\A.QLT"));
        EXPECT_EQ(itemsOf(gFileList), files);
        EXPECT_TRUE(gDatabaseList->IsEmpty());
        EXPECT_EQ(std::u16string(gComment), comment);
        EXPECT_EQ(gRegistryMarked, registryStart == 0 ? 0U : 1U);
        EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), registryStart);
    }
}

// The entries before the cut are complete. The cut entry has no stream, and none of its fields comes from another
// entry.
TEST_F(ListDamageTest, ListCutAtEveryByteGivesNoStaleValues)
{
    const Bytes whole = head + fileA + fileB + registry;
    const std::size_t endA = head.size() + fileA.size(), endB = endA + fileB.size();
    for (std::size_t cut = 0; cut < whole.size(); cut++) {
        SCOPED_TRACE(cut);
        gRegistryMarked = 0;
        make(u"\\A.QLT", whole.substr(0, cut));
        ASSERT_TRUE(LoadList(u"\\A.QLT"));
        std::vector<LoadedItem> files = itemsOf(gFileList);
        const std::size_t start = cut >= endB ? endB : cut >= endA ? endA : head.size();
        if (cut > start + 2 && cut < endB) {  // kind, flag and part of a name's length are in the list
            ASSERT_FALSE(files.empty());
            const auto& [name, startOffset, endOffset] = files.back();
            EXPECT_EQ(startOffset, 0U);
            EXPECT_EQ(endOffset, 0U);
            EXPECT_TRUE(std::get<0>(cut < endA ? itemA : itemB).starts_with(name));
            files.pop_back();
        }
        std::vector<LoadedItem> complete = {itemA, itemB};
        complete.resize(cut >= endB ? 2 : cut >= endA ? 1 : 0);
        EXPECT_EQ(files, complete);
        EXPECT_EQ(gRegistryMarked, cut > endB + 2 ? 1U : 0U);
        if (gRegistryMarked) {
            EXPECT_EQ(EntryEndOffset(gRegistryEntry.bytes), 0U);
        }
    }
}

}  // namespace
