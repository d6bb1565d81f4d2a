// Databases into images and back: the format byte by byte, the questions, images in any state.

#include "database_image.h"

#include "name_space.h"
#include "scripted_questions.h"
#include "store_fixture.h"

#include "ce/dialog.h"
#include "ce/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

// "58 00" and the like.
std::string hex(const std::string& digits)
{
    std::istringstream words(digits);
    std::string bytes;
    for (std::string word; words >> word;)
        bytes += static_cast<char>(std::stoi(word, nullptr, 16));
    return bytes;
}

std::string repeated(const std::string& piece, int times)
{
    std::string all;
    for (; times > 0; --times)
        all += piece;
    return all;
}

// A database "Ab" of type 0x01020304 with one sort order and two records, of every type that has a value and one that
// has none; the record that was made last comes first.
const std::string goldenImage = hex("06 00 00 00  41 00 62 00 00 00"
                                    " 04 03 02 01  02 00  01 00"
                                    " 1F 00 02 00  01 00 00 00"
                                    " 01 00  0B 00 09 00  07 00"
                                    " 07 00"
                                    " 02 00 01 00  FE FF  00 00"
                                    " 12 00 02 00  FF FF  00 00"
                                    " 03 00 03 00  00 00 00 80  01 00"
                                    " 13 00 04 00  04 03 02 01  00 00"
                                    " 1F 00 05 00  04 00 00 00  42 00 00 00  00 00"
                                    " 40 00 06 00  01 00 00 00 02 00 00 00  00 00"
                                    " 41 00 07 00  03 00 00 00  0A 00 0D  02 00");

Records goldenRecords()
{
    return {{number(1, CEVT_I2, SHORT{-2}), number(2, CEVT_UI2, USHORT{0xFFFF}),
             number(3, CEVT_I4, LONG{-2147483647 - 1}, 1), number(4, CEVT_UI4, ULONG{0x01020304}), text(5, u"B"),
             number(6, CEVT_FILETIME, FILETIME{1, 2}), blob(7, std::string("\n\0\r", 3), 2)},
            {number(9, CEVT_BOOL, BOOL{1}, 7)}};
}

Records reversed(Records records)
{
    std::reverse(records.begin(), records.end());
    return records;
}

class DatabaseImageTest : public StoreTest {
protected:
    DatabaseImageTest()
    {
        gQuestions = {};
        fs::create_directory(root());
        EXPECT_TRUE(platform::file::addMount({.name = u"",
                                              .folder = ::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC),
                                              .card = false,
                                              .capacity = {}}));
    }
    ~DatabaseImageTest() override { platform::file::removeAllMounts(); }

    [[nodiscard]] fs::path root() const { return folder_ / "object-store"; }

    [[nodiscard]] std::string image(const std::string& name) const
    {
        std::stringstream content;
        content << std::ifstream(root() / (name + ".CDB"), std::ios::binary).rdbuf();
        return content.str();
    }

    // 1 or 0, as RestoreDatabase says.
    [[nodiscard]] BOOL restore(const std::string& bytes, const std::string& name = "Ab") const
    {
        std::ofstream(root() / (name + ".CDB"), std::ios::binary) << bytes;
        const std::u16string path = u"\\" + std::u16string(name.begin(), name.end()) + u".CDB";
        const BOOL restored = RestoreDatabase(path.c_str());
        EXPECT_EQ(image(name), bytes);
        return restored;
    }

    static void makeGolden()
    {
        const SORTORDERSPEC order = {0x0002001F, 1};
        ASSERT_NE(CeCreateDatabase(u"Ab", 0x01020304, 1, &order), 0U);
        const HANDLE database = opened(u"Ab");
        for (const Record& record : goldenRecords())
            add(database, record);
        CloseHandle(database);
    }

    // What is lost in an image: the values of types that have none there.
    static Records goldenRestored()
    {
        Records records = reversed(goldenRecords());
        records[0][0].value = std::string(4, '\0');
        return records;
    }

    // Everything about a database but its oid and times.
    static void expectGolden(const Records& records)
    {
        const CEDBASEINFO info = infoOf(u"Ab");
        EXPECT_EQ(info.dwDbaseType, 0x01020304U);
        EXPECT_EQ(info.wNumSortOrder, 1);
        EXPECT_EQ(info.rgSortSpecs[0].propid, 0x0002001FU);
        EXPECT_EQ(info.rgSortSpecs[0].dwFlags, 1U);
        EXPECT_EQ(recordsOf(u"Ab"), records);
    }

    static void makeOld(const std::u16string& name)
    {
        create(name, 9);
        const HANDLE database = opened(name);
        add(database, {text(1, u"old")});
        CloseHandle(database);
    }
    static bool isOld(const std::u16string& name)
    {
        return exists(name) && infoOf(name).dwDbaseType == 9 && recordsOf(name) == Records{{text(1, u"old")}};
    }
};

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
    EXPECT_EQ(restore(goldenImage), 1);
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
    EXPECT_EQ(restore(image("Ab")), 1);
    EXPECT_EQ(recordsOf(u"Ab"), (Records{{text(1, u""), blob(2, "")}}));
}

TEST_F(DatabaseImageTest, ExistingDatabaseGoesOnlyWithAYes)
{
    makeOld(u"aB");
    EXPECT_EQ(restore(goldenImage), 0);
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Database:Ab exists replace ?"});
    EXPECT_EQ(gQuestions.captionOfLast, u"Warning");
    EXPECT_EQ(gQuestions.typeOfLast, MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2);
    EXPECT_FALSE(gQuestions.waitCursorAsked);
    EXPECT_TRUE(gQuestions.waitCursor);

    gQuestions.yes = true;
    EXPECT_EQ(restore(goldenImage), 1);
    EXPECT_EQ(gQuestions.asked.size(), 2U);
    expectGolden(goldenRestored());

    // In use, it can't be deleted: its content is replaced, it keeps its type.
    CeDeleteDatabase(CeFindNextDatabase(CeFindFirstDatabase(0)));
    makeOld(u"Ab");
    const HANDLE inUse = opened(u"Ab");
    EXPECT_EQ(restore(goldenImage), 1);
    CloseHandle(inUse);
    EXPECT_EQ(infoOf(u"Ab").dwDbaseType, 9U);
    EXPECT_EQ(recordsOf(u"Ab"), goldenRestored());

    EXPECT_EQ(RestoreDatabase(u"\\nowhere.CDB"), 0);
    EXPECT_EQ(gQuestions.asked.size(), 3U);
}

TEST_F(DatabaseImageTest, NameInTheImageEmptiesNoOtherDatabaseUnasked)
{
    makeOld(u"Ab");
    makeOld(u"Path");
    EXPECT_EQ(restore(goldenImage, "Free"), 0);
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Database:Ab exists replace ?"});
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_FALSE(exists(u"Free"));

    gQuestions = {};
    gQuestions.yes = true;
    EXPECT_EQ(restore(goldenImage.substr(0, goldenImage.size() - 1), "Path"), 0);
    EXPECT_EQ(gQuestions.asked.size(), 2U);
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_TRUE(isOld(u"Path"));
    EXPECT_EQ(restore(goldenImage, "Path"), 1);
    EXPECT_FALSE(exists(u"Path"));
    expectGolden(goldenRestored());
}

TEST_F(DatabaseImageTest, ImageCutAtEveryByteLosesNoOldDatabaseAndMakesNoRecordOfIts)
{
    const std::size_t headBytes = 26;
    const std::size_t firstRecordEnd = headBytes + 8;
    gQuestions.yes = true;
    for (std::size_t size = 0; size < goldenImage.size(); ++size) {
        SCOPED_TRACE(size);
        ASSERT_EQ(restore(goldenImage.substr(0, size)), 0);
        ASSERT_EQ(exists(u"Ab"), size >= headBytes);
        if (size >= headBytes) {
            const Records whole = {goldenRestored()[0]};
            expectGolden(size >= firstRecordEnd ? whole : Records{});
            CEOID oid = 0;
            CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
            ASSERT_TRUE(CeDeleteDatabase(oid));
        }
        makeOld(u"Ab");
        ASSERT_EQ(restore(goldenImage.substr(0, size)), 0);
        ASSERT_TRUE(isOld(u"Ab"));
        CEOID oid = 0;
        CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
        ASSERT_TRUE(CeDeleteDatabase(oid));
    }
    // What stands behind the last record is no part of it.
    EXPECT_EQ(restore(goldenImage + "more"), 1);
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
    EXPECT_EQ(restore(damage.bytes), damage.usable ? 1 : 0);
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
    EXPECT_EQ(restore(damage.bytes), 0);
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
    ASSERT_EQ(restore(bytes), 1);
    EXPECT_EQ(recordsOf(u"Ab"), (Records{large, five[0]}));

    CEOID oid = 0;
    CloseHandle(CeOpenDatabase(&oid, u"Ab", 0, 0, nullptr));
    ASSERT_TRUE(CeDeleteDatabase(oid));
    EXPECT_EQ(restore(bytes.substr(0, 34 + 2 + 8 * 300)), 0);
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
    ASSERT_EQ(restore(image("Ab")), 1);
    EXPECT_EQ(infoOf(u"Ab").wNumRecords, 40000);
    EXPECT_EQ(recordsOf(u"Ab"), reversed(std::move(expected)));
}

TEST_F(DatabaseImageTest, LongNameIsCutAlikeByQuestionAndStore)
{
    const std::string longName(200, 'n');
    std::string bytes = std::string("\x92\x01\0\0", 4) + repeated(std::string("n\0", 2), 200) + std::string(2, '\0') +
                        type + oneRecord + hex("01 00") + property;
    EXPECT_EQ(restore(bytes, longName), 1);
    EXPECT_EQ(recordsOf(std::u16string(31, u'n')), five);
    EXPECT_EQ(restore(bytes, longName), 0);
    ASSERT_EQ(gQuestions.asked.size(), 1U);
    EXPECT_NE(gQuestions.asked[0].find(std::u16string(200, u'n') + u" exists replace ?"), std::u16string::npos);
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
