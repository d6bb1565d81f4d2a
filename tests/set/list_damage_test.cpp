#include "set/list_file.h"

#include "set_fixture.h"

namespace {

const Bytes nul = hex("00 00");

// A number, and characters that need not be as many.
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

TEST_F(ListDamageTest, CostsOnlyItself)
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

// The items before the cut are complete. The cut entry has no stream, and no field of another entry.
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
