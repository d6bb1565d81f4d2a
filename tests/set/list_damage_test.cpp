#include "set/list_file.h"

#include "set_fixture.h"

namespace {

const Bytes head = hex("03 00 00 00  48 00 69 00 00 00");
const Bytes fileA = hex("01 01  03 00 00 00  5C 00 61 00 00 00  00 00 00 00  0C 00 00 00");
const Bytes fileB = hex("01 01  03 00 00 00  5C 00 62 00 00 00  0C 00 00 00  18 00 00 00");
const Bytes offsets = hex("0C 00 00 00  18 00 00 00");
const Bytes registry = hex("03 01  01 00 00 00  00 00  18 00 00 00  24 00 00 00");

const LoadedItem itemA = {u"\\a", 0, 12};
const LoadedItem itemB = {u"\\b", 12, 24};

struct Fault {
    const char* name;
    Bytes list;
    std::vector<LoadedItem> files;
    std::u16string comment = u"Hi";
    DWORD registryStart = 0;
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.name;
}

class ListDamageTest : public SetTest, public testing::WithParamInterface<Fault> {};

TEST_P(ListDamageTest, CostsOnlyItself)
{
    const auto& [name, list, files, comment, registryStart] = GetParam();
    CopyText(gComment, u"of the set before");
    write(u"\\A.QLT", list);
    ASSERT_TRUE(LoadList(u"\\A.QLT"));
    EXPECT_EQ(itemsOf(gFileList), files);
    EXPECT_TRUE(gDatabaseList->IsEmpty());
    EXPECT_EQ(std::u16string(gComment), comment);
    EXPECT_EQ(gRegistryMarked, registryStart == 0 ? 0U : 1U);
    EXPECT_EQ(EntryStartOffset(gRegistryEntry.bytes), registryStart);
}

Bytes letters(std::size_t characters)
{
    return repeated(characters, hex("78 00"));
}

const Bytes entryOfFile = hex("01 01");
const Bytes terminator = hex("00 00");
const std::u16string longestComment(259, u'x');

INSTANTIATE_TEST_SUITE_P(
    Single, ListDamageTest,
    testing::Values(
        Fault{"NameOf261Chars",
              head + fileA + entryOfFile + hex("05 01 00 00") + letters(260) + terminator + offsets + fileB,
              {itemA, itemB}},
        Fault{"NameOf20000Chars",
              head + fileA + entryOfFile + hex("20 4E 00 00") + letters(20000) + offsets + fileB,
              {itemA, itemB}},
        Fault{"NameLengthBeyondTheFile", head + fileA + entryOfFile + hex("FF FF FF FF") + letters(3), {itemA}},
        Fault{"NameLengthThatDoublesToNothing", head + fileA + entryOfFile + hex("00 00 00 80") + offsets, {itemA}},
        Fault{"NameOfNoChars", head + fileA + entryOfFile + hex("00 00 00 00") + offsets + fileB, {itemA, itemB}},
        Fault{"NameWithoutNul",
              head + fileA + entryOfFile + hex("02 00 00 00  5C 00 63 00") + offsets + fileB,
              {itemA, itemB}},
        Fault{"NameOf260CharsWithoutNul",
              head + entryOfFile + hex("04 01 00 00") + letters(260) + offsets + fileB,
              {itemB}},
        Fault{"NulInsideName",
              head + entryOfFile + hex("04 00 00 00  5C 00 00 00 63 00 00 00") + offsets + fileA,
              {{u"\\", 12, 24}, itemA}},
        Fault{"CommentOf300Chars", hex("2C 01 00 00") + letters(299) + terminator + fileA, {itemA}, longestComment},
        Fault{"CommentOf260CharsWithoutNul", hex("04 01 00 00") + letters(260) + fileA, {itemA}, longestComment},
        Fault{"CommentCutInsideASurrogatePair",
              hex("2C 01 00 00") + letters(258) + hex("3D D8 00 DE") + letters(39) + terminator + fileA,
              {itemA},
              std::u16string(258, u'x')},
        Fault{"CommentWithoutNul", hex("02 00 00 00  48 00 69 00") + fileA, {itemA}},
        Fault{"CommentOfNoChars", hex("00 00 00 00") + fileA, {itemA}, u""},
        Fault{"CommentLengthBeyondTheFile", hex("FF FF FF FF  48 00 69 00"), {}, u"Hi"},
        Fault{"NothingAtAll", {}, {}, u""}, Fault{"KindAndFlagAlone", head + fileA + hex("01 01"), {itemA}},
        Fault{"OneByteAfterRegistry", head + registry + hex("03 01 05"), {}, u"Hi", 0x18},
        Fault{"ZerosAfterRegistry", head + fileA + registry + Bytes(40), {itemA}, u"Hi", 0x18},
        Fault{"RegistryWithADamagedNameAfterRegistry",
              head + registry + hex("03 01  00 00 00 00") + offsets,
              {},
              u"Hi",
              0x0C},
        Fault{"RegistryWithoutName", head + hex("03 01  00 00 00 00") + offsets, {}, u"Hi", 0x0C},
        Fault{"RegistryWithANameOf300Chars",
              head + hex("03 01  2C 01 00 00") + letters(300) + offsets + fileA,
              {itemA},
              u"Hi",
              0x0C}),
    [](const auto& fault) { return std::string(fault.param.name); });

class ListCutTest : public SetTest {};

// The items before the cut are complete. The cut entry has no stream, and no field of another entry.
TEST_F(ListCutTest, ListCutAtEveryByteGivesNoStaleValues)
{
    const Bytes whole = head + fileA + fileB + registry;
    const std::size_t endA = head.size() + fileA.size(), endB = endA + fileB.size();
    for (std::size_t cut = 0; cut < whole.size(); cut++) {
        SCOPED_TRACE(cut);
        gRegistryMarked = 0;
        write(u"\\A.QLT", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
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
