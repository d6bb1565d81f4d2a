// Databases into images and back: the format byte by byte, the questions, images in any state.

#include "image_fixture.h"
#include "kernel/troubles.h"

#include "database/device_database.h"

#include "ce/dialog.h"

namespace {

TEST_F(DatabaseImageTest, ImageIsTheFormatByteForByteAndComesBack)
{
    makeGolden();
    std::ofstream(root() / "Ab.CDB") << std::string(5000, 'x');
    EXPECT_EQ(DumpDatabase(u"aB"), 1);
    EXPECT_EQ(image("aB"), goldenImage);
    EXPECT_EQ(DumpDatabase(u"Ab"), 1);
    EXPECT_EQ(image("Ab"), goldenImage);

    EXPECT_EQ(DumpDatabase(u"nowhere"), 0);
    EXPECT_FALSE(fs::exists(root() / "nowhere.CDB"));

    // Where the image can't be made its packing fails, and that is told once.
    fs::create_directory(root() / "AB.CDB");
    BOOL made = TRUE;
    EXPECT_EQ(DumpDatabase(u"AB", &made), 1);
    EXPECT_FALSE(made);

    close();
    fs::remove(folder_ / "device.db");
    open();
    EXPECT_EQ(restore(goldenImage), RestoreDone);
    EXPECT_TRUE(gQuestions.asked.empty());
    expectGolden(goldenRestored());
}

TEST_F(DatabaseImageTest, EmptyOnesStayEmptyAndARecordWithoutPropertiesIsMadeOfNothing)
{
    create(u"Ab", 5);
    EXPECT_EQ(DumpDatabase(u"Ab"), 1);
    const std::string head = hex("06 00 00 00  41 00 62 00 00 00  05 00 00 00");
    EXPECT_EQ(image("Ab"), head + hex("00 00  01 00  00 00 00 00 00 00 00 00"));

    const HANDLE database = opened(u"Ab");
    add(database, {text(1, u""), blob(2, "")});
    write(database, add(database, {text(1, u"")}), {text(1, u"", CEDB_PROPDELETE)});
    CloseHandle(database);
    EXPECT_EQ(DumpDatabase(u"Ab"), 1);
    const std::string records = hex("00 00  02 00  1F 00 01 00  02 00 00 00  00 00  00 00"
                                    " 41 00 02 00  00 00 00 00  00 00");
    EXPECT_EQ(image("Ab"), head + hex("02 00  01 00  00 00 00 00 00 00 00 00") + records);
    gQuestions.yes = true;
    EXPECT_EQ(restore(image("Ab")), RestoreDone);
    EXPECT_EQ(recordsOf(u"Ab"), (Records{{text(1, u""), blob(2, "")}}));
}

TEST_F(DatabaseImageTest, ExistingDatabaseGoesOnlyWithAYes)
{
    makeOld(u"aB");
    EXPECT_EQ(restore(goldenImage), RestoreDeclined);
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Database:Ab exists replace ?"});
    EXPECT_EQ(gQuestions.captionOfLast, u"Warning");
    EXPECT_EQ(gQuestions.typeOfLast, MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2);
    EXPECT_FALSE(gQuestions.waitCursorAsked);
    EXPECT_TRUE(gQuestions.waitCursor);

    gQuestions.yes = true;
    EXPECT_EQ(restore(goldenImage), RestoreDone);
    EXPECT_EQ(gQuestions.asked.size(), 2U);
    expectGolden(goldenRestored());

    // In use, it can't be deleted: its content is replaced, it keeps its type.
    CeDeleteDatabase(CeFindNextDatabase(CeFindFirstDatabase(0)));
    makeOld(u"Ab");
    const HANDLE inUse = opened(u"Ab");
    EXPECT_EQ(restore(goldenImage), RestoreDone);
    CloseHandle(inUse);
    EXPECT_EQ(infoOf(u"Ab").dwDbaseType, 9U);
    EXPECT_EQ(recordsOf(u"Ab"), goldenRestored());

    EXPECT_EQ(RestoreDatabase(u"\\nowhere.CDB"), RestoreFailed);
    EXPECT_EQ(gQuestions.asked.size(), 3U);
}

TEST_F(DatabaseImageTest, NameInTheImageEmptiesNoOtherDatabaseUnasked)
{
    makeOld(u"Ab");
    makeOld(u"Path");
    EXPECT_EQ(restore(goldenImage, "Free"), RestoreDeclined);
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Database:Ab exists replace ?"});
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_FALSE(exists(u"Free"));

    gQuestions = {};
    gQuestions.yes = true;
    EXPECT_EQ(restore(goldenImage.substr(0, goldenImage.size() - 1), "Path"), RestoreFailed);
    EXPECT_EQ(gQuestions.asked.size(), 2U);
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_TRUE(isOld(u"Path"));
    EXPECT_EQ(restore(goldenImage, "Path"), RestoreDone);
    EXPECT_FALSE(exists(u"Path"));
    expectGolden(goldenRestored());
}

// Both images are in one set where the device has the folder.
TEST_F(DatabaseImageTest, NameWithAFolderIsNeverTakenForTheOneBehindIt)
{
    fs::create_directory(root() / "sub");
    makeOld(u"Ab");
    makeOld(u"sub\\Ab");
    ASSERT_EQ(DumpDatabase(u"sub\\Ab"), 1);
    gQuestions.yes = true;
    EXPECT_EQ(RestoreDatabase(u"\\sub\\Ab.CDB"), RestoreDone);
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Database:sub\\Ab exists replace ?"});
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_TRUE(isOld(u"sub\\Ab"));
}

TEST_F(DatabaseImageTest, ImageCutAtEveryByteLosesNoOldDatabaseAndMakesNoRecordOfIts)
{
    const std::size_t headBytes = 26;
    const std::size_t firstRecordEnd = headBytes + 8;
    gQuestions.yes = true;
    for (std::size_t size = 0; size < goldenImage.size(); ++size) {
        SCOPED_TRACE(size);
        ASSERT_EQ(restore(goldenImage.substr(0, size)), RestoreFailed);
        ASSERT_EQ(GetLastError(), ERROR_HANDLE_EOF);
        ASSERT_EQ(exists(u"Ab"), size >= headBytes);
        if (size >= headBytes) {
            const Records whole = {goldenRestored()[0]};
            expectGolden(size >= firstRecordEnd ? whole : Records{});
            CEOID oid = 0;
            CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
            ASSERT_TRUE(CeDeleteDatabase(oid));
        }
        makeOld(u"Ab");
        ASSERT_EQ(restore(goldenImage.substr(0, size)), RestoreFailed);
        ASSERT_TRUE(isOld(u"Ab"));
        CEOID oid = 0;
        CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
        ASSERT_TRUE(CeDeleteDatabase(oid));
    }
    // What stands behind the last record is no part of it.
    EXPECT_EQ(restore(goldenImage + "more"), RestoreDone);
    expectGolden(goldenRestored());
}

struct Damage {
    const char* name;
    std::string bytes;
    bool usable = false;  // its records come, whatever else
    Records records = {};
};

class DamagedImageTest : public DatabaseImageTest, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedImageTest, CostsNoDatabaseAndNoMemory)
{
    const Damage& damage = GetParam();
    EXPECT_EQ(restore(damage.bytes), damage.usable ? RestoreDone : RestoreFailed);
    if (damage.usable) {
        EXPECT_EQ(recordsOf(u"Ab"), damage.records);
        return;
    }
    if (exists(u"Ab")) {
        EXPECT_EQ(recordsOf(u"Ab"), damage.records);
        CEOID oid = 0;
        CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
        CeDeleteDatabase(oid);
    }
    makeOld(u"Ab");
    gQuestions.yes = true;
    EXPECT_EQ(restore(damage.bytes), RestoreFailed);
    EXPECT_TRUE(isOld(u"Ab"));
}

const std::string name = hex("06 00 00 00  41 00 62 00 00 00");
const std::string type = hex("00 00 00 00");
const std::string oneRecord = hex("01 00 00 00");  // and no sort orders
const std::string head = name + type + oneRecord;
const std::string property = hex("02 00 01 00  05 00  00 00");
const Records five = {{number(1, CEVT_I2, SHORT{5})}};
// A text and a blob whose sizes lie, and what stands behind them and looks like a whole property.
const std::string hugeText = hex("1F 00 01 00  FE FF FF FF") + property + property;
const std::string hugeBlob = hex("41 00 01 00  FF FF FF FF") + property + property;

INSTANTIATE_TEST_SUITE_P(
    , DamagedImageTest,
    testing::Values(
        Damage{"NameSizeOf0", hex("00 00 00 00") + type + oneRecord + hex("01 00") + property},
        Damage{"EmptyName", hex("02 00 00 00  00 00") + type + oneRecord + hex("01 00") + property},
        Damage{"NameSizeOdd", hex("05 00 00 00  41 00 62 00 00") + type + oneRecord + hex("01 00") + property},
        Damage{"NameWithoutNul", hex("04 00 00 00  41 00 62 00") + type + oneRecord + hex("01 00") + property},
        Damage{"NameOf261Characters", hex("0A 02 00 00") + repeated(hex("41 00"), 260) + hex("00 00") + head},
        Damage{"NameThatNoDatabaseCanHave",
               hex("06 00 00 00  00 D8 62 00 00 00") + type + oneRecord + hex("01 00") + property},
        Damage{"NameOf4GiB", hex("FE FF FF FF") + head},
        Damage{"NameThatEndsEarly",
               hex("0A 00 00 00  41 00 62 00 00 00 43 00 00 00") + type + oneRecord + hex("01 00") + property, true,
               five},
        Damage{"NinetySortOrders",
               name + type + hex("01 00  5A 00") + repeated(hex("01 00 00 00 00 00 00 00"), 90) + hex("01 00") +
                   property,
               true, five},
        Damage{"NinetyOneSortOrders", name + type + hex("01 00  5B 00") + repeated(hex("01 00 00 00 00 00 00 00"), 91) +
                                          hex("01 00") + property},
        Damage{"MostSortOrders", name + type + hex("01 00  FF FF") + repeated(property, 100)},
        Damage{"MoreRecordsThanThereAre", name + type + hex("FF FF  00 00") + hex("01 00") + property, false, five},
        Damage{"MorePropertiesThanThereAre", head + hex("FF FF") + repeated(property, 300)},
        Damage{"TextOf4GiB", name + type + hex("02 00 00 00  02 00") + hugeText + hex("01 00") + property},
        Damage{"BlobOf4GiB", name + type + hex("02 00 00 00  02 00") + hugeBlob + hex("01 00") + property},
        Damage{"TextOfSize0", head + hex("01 00  1F 00 01 00  00 00 00 00  00 00"), true, {{text(1, u"")}}},
        Damage{"TextWithoutNul", head + hex("01 00  1F 00 01 00  02 00 00 00  42 00  00 00"), true, {{text(1, u"B")}}},
        Damage{"TextOfHalfACharacter",
               head + hex("01 00  1F 00 01 00  03 00 00 00  42 00 43  00 00"),
               true,
               {{text(1, u"B")}}},
        Damage{"TypeNobodyKnows",
               head + hex("01 00  E7 03 01 00  09 00"),
               true,
               {{{propertyId(1, 999), std::string(16, '\0'), 9}}}}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(DatabaseImageTest, RecordOfMoreThan255PropertiesComesBackWholeOrNotAtAll)
{
    Record large;
    for (WORD i = 0; i < 600; ++i)
        large.push_back(number(i, CEVT_UI2, i));
    create(u"Ab");
    const HANDLE database = opened(u"Ab");
    add(database, {number(1, CEVT_I2, SHORT{5})});
    add(database, large);
    CloseHandle(database);
    ASSERT_EQ(DumpDatabase(u"Ab"), 1);
    const std::string bytes = image("Ab");
    gQuestions.yes = true;
    ASSERT_EQ(restore(bytes), RestoreDone);
    EXPECT_EQ(recordsOf(u"Ab"), (Records{large, five[0]}));

    CEOID oid = 0;
    CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
    ASSERT_TRUE(CeDeleteDatabase(oid));
    EXPECT_EQ(restore(bytes.substr(0, 34 + 2 + 8 * 300)), RestoreFailed);
    EXPECT_TRUE(recordsOf(u"Ab").empty());
}

TEST_F(DatabaseImageTest, FortyThousandRecordsComeBackInImageOrder)
{
    create(u"Ab");
    HANDLE database = opened(u"Ab");
    Records expected;
    for (LONG i = 0; i < 40000; ++i) {
        expected.push_back({number(1, CEVT_I4, i), text(2, u"name"), blob(3, std::string("ab\0", 3))});
        ASSERT_NE(add(database, expected.back()), 0U);
    }
    CloseHandle(database);
    ASSERT_EQ(DumpDatabase(u"Ab"), 1);
    gQuestions.yes = true;
    ASSERT_EQ(restore(image("Ab")), RestoreDone);
    EXPECT_EQ(infoOf(u"Ab").wNumRecords, 40000);
    EXPECT_EQ(recordsOf(u"Ab"), reversed(std::move(expected)));
}

TEST_F(DatabaseImageTest, LongNameIsCutAlikeByQuestionAndStore)
{
    const std::string longName(200, 'n');
    std::string bytes = std::string("\x92\x01\0\0", 4) + repeated(std::string("n\0", 2), 200) + std::string(2, '\0') +
                        type + oneRecord + hex("01 00") + property;
    EXPECT_EQ(restore(bytes, longName), RestoreDone);
    EXPECT_EQ(recordsOf(std::u16string(31, u'n')), five);
    EXPECT_EQ(restore(bytes, longName), RestoreDeclined);
    ASSERT_EQ(gQuestions.asked.size(), 1U);
    EXPECT_NE(gQuestions.asked[0].find(std::u16string(200, u'n') + u" exists replace ?"), std::u16string::npos);
}

// What a bit that fell over in the database's own row makes of it.
TEST_F(DatabaseImageTest, DatabaseThatCountsOtherRecordsThanItHasIsNoWholeOne)
{
    using namespace platform::kernel;
    for (const std::string count : {"1", "3"}) {
        SCOPED_TRACE(count);
        const std::u16string name = u"counts " + std::u16string(count.begin(), count.end());
        makeOld(name);
        const HANDLE database = opened(name);
        add(database, {text(1, u"second")});
        CloseHandle(database);
        {
            const platform::database::DatabaseUse use;
            ASSERT_EQ(use->execute("UPDATE store_database SET records = " + count), platform::database::Step::Done);
        }
        const std::size_t before = troublesOf(Trouble::Reading, Troubled::Database).size();
        EXPECT_EQ(DumpDatabase(name.c_str()), 0);
        EXPECT_EQ(troublesOf(Trouble::Reading, Troubled::Database).size(), before + 1);

        const HANDLE reader = opened(name, CEDB_AUTOINCREMENT);
        EXPECT_FALSE(read(reader).empty());
        EXPECT_FALSE(read(reader).empty());
        EXPECT_TRUE(read(reader).empty());
        EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
        CloseHandle(reader);
    }
}

TEST_F(DatabaseImageTest, ImageThatCanNotBeWrittenWholeIsNotThere)
{
    platform::file::removeAllMounts();
    makeGolden();
    for (std::uint64_t capacity = 0; capacity <= goldenImage.size(); ++capacity) {
        ASSERT_TRUE(platform::file::addMount({.name = u"",
                                              .folder = ::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC),
                                              .card = false,
                                              .capacity = capacity}));
        EXPECT_EQ(DumpDatabase(u"Ab"), 1);
        EXPECT_EQ(image("Ab"), capacity < goldenImage.size() ? "" : goldenImage);
        EXPECT_EQ(fs::exists(root() / "Ab.CDB"), capacity == goldenImage.size());
        platform::file::removeAllMounts();
    }
}

}  // namespace
