// Databases to images and back: the bytes of the format, the questions, damaged images.

#include "file/host_faults.h"
#include "image_fixture.h"
#include "kernel/troubles.h"

#include "ce/dialog.h"

namespace {

TEST_F(DatabaseImageTest, ImageHasTheBytesOfTheFormatAndComesBackAndIsDeletedIfItCannotBeWrittenWhole)
{
    makeGolden();
    std::ofstream(root() / "Ab.CDB") << std::string(5000, 'x');
    for (std::uint64_t capacity = 0; capacity <= goldenImage.size(); ++capacity) {
        mount(capacity);
        EXPECT_EQ(DumpDatabase(u"Ab"), 1);
        EXPECT_EQ(image("Ab"), capacity < goldenImage.size() ? "" : goldenImage);
        EXPECT_EQ(fs::exists(root() / "Ab.CDB"), capacity == goldenImage.size());
    }
    mount();
    EXPECT_EQ(DumpDatabase(u"nowhere"), 0);
    EXPECT_FALSE(fs::exists(root() / "nowhere.CDB"));

    // The image can't be made if a folder has its name.
    fs::create_directory(root() / "AB.CDB");
    BOOL made = TRUE;
    EXPECT_EQ(DumpDatabase(u"AB", &made), 1);
    EXPECT_FALSE(made);

    ASSERT_TRUE(remove(u"Ab"));
    EXPECT_EQ(restore(goldenImage), RestoreDone);
    EXPECT_TRUE(gQuestions.asked.empty());
    expectGolden(goldenRestored());
}

TEST_F(DatabaseImageTest, ImageIsWholeOrDeletedWhicheverCallOfTheHostFails)
{
    using namespace platform::file;
    // So many records that the file layer gathers the last bytes of the image.
    create(u"Ab", 5, Records(390, {text(1, std::u16string(80, u'x'))}));
    EXPECT_EQ(DumpDatabase(u"Ab"), 1);
    const std::string whole = image("Ab");
    ASSERT_GT(whole.size(), 65536U);
    for (auto [nth, failed] = std::pair(1U, true); failed; ++nth) {
        SCOPED_TRACE(nth);
        std::ofstream(root() / "Ab.CDB") << "old";
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = nth, .error = EIO});
        BOOL made = FALSE;
        EXPECT_EQ(DumpDatabase(u"Ab", &made), 1);
        failed = hostCallsMade() >= nth;
        clearFaultPlan();
        const std::string left = image("Ab");
        EXPECT_TRUE(left == whole || (failed && left == (made ? "" : "old"))) << left.size();
    }
}

TEST_F(DatabaseImageTest, EmptyValuesComeBackAndARecordWithoutPropertiesIsLeftOut)
{
    create(u"Ab", 5, {{text(1, u""), blob(2, "")}});
    {
        const OpenDatabase database(u"Ab");
        write(database, add(database, {text(1, u"")}), {text(1, u"", CEDB_PROPDELETE)});
    }
    EXPECT_EQ(DumpDatabase(u"Ab"), 1);
    EXPECT_EQ(image("Ab"),
              hex("06 00 00 00  41 00 62 00 00 00  05 00 00 00  02 00  01 00  00 00 00 00 00 00 00 00"
                  " 00 00  02 00  1F 00 01 00  02 00 00 00  00 00  00 00  41 00 02 00  00 00 00 00  00 00"));
    gQuestions.yes = true;
    EXPECT_EQ(restore(image("Ab")), RestoreDone);
    EXPECT_EQ(recordsOf(u"Ab"), (Records{{text(1, u""), blob(2, "")}}));
}

TEST_F(DatabaseImageTest, ExistingDatabaseIsReplacedOnlyAfterAYes)
{
    makeOld(u"aB");
    EXPECT_EQ(restore(goldenImage), RestoreDeclined);
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Ab"});
    EXPECT_FALSE(gQuestions.waitCursorAsked);
    EXPECT_TRUE(gQuestions.waitCursor);

    gQuestions.yes = true;
    EXPECT_EQ(restore(goldenImage), RestoreDone);
    EXPECT_EQ(gQuestions.asked.size(), 2U);
    expectGolden(goldenRestored());

    // An open database can't be deleted. So the restore replaces its content, and the database keeps its type.
    remove(u"Ab");
    makeOld(u"Ab");
    {
        const OpenDatabase inUse(u"Ab");
        EXPECT_EQ(restore(goldenImage), RestoreDone);
    }
    EXPECT_EQ(infoOf(u"Ab").dwDbaseType, 9U);
    EXPECT_EQ(recordsOf(u"Ab"), goldenRestored());

    EXPECT_EQ(RestoreDatabase(u"\\nowhere.CDB"), RestoreFailed);
    EXPECT_EQ(gQuestions.asked.size(), 3U);
}

TEST_F(DatabaseImageTest, DatabaseThatTheImageNamesIsReplacedOnlyAfterAYes)
{
    makeOld(u"Ab");
    makeOld(u"Path");
    EXPECT_EQ(restore(goldenImage, "Free"), RestoreDeclined);
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"Ab"});
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

// A set contains the images of both databases if the device has the folder `sub`.
TEST_F(DatabaseImageTest, NameWithAFolderIsNotTakenForItsLastPart)
{
    fs::create_directory(root() / "sub");
    makeOld(u"Ab");
    makeOld(u"sub\\Ab");
    ASSERT_EQ(DumpDatabase(u"sub\\Ab"), 1);
    gQuestions.yes = true;
    EXPECT_EQ(RestoreDatabase(u"\\sub\\Ab.CDB"), RestoreDone);
    EXPECT_EQ(gQuestions.asked, std::vector<std::u16string>{u"sub\\Ab"});
    EXPECT_TRUE(isOld(u"Ab"));
    EXPECT_TRUE(isOld(u"sub\\Ab"));
}

TEST_F(DatabaseImageTest, ImageCutAtAnyByteLosesNoOldDatabaseAndMakesWholeRecordsOnly)
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
            expectGolden(size >= firstRecordEnd ? Records{goldenRestored()[0]} : Records{});
            ASSERT_TRUE(remove(u"Ab"));
        }
        makeOld(u"Ab");
        ASSERT_EQ(restore(goldenImage.substr(0, size)), RestoreFailed);
        ASSERT_TRUE(isOld(u"Ab"));
        ASSERT_TRUE(remove(u"Ab"));
    }
    // Bytes after the last record are ignored.
    EXPECT_EQ(restore(goldenImage + "more"), RestoreDone);
    expectGolden(goldenRestored());
}

struct Damage {
    const char* name;
    std::string bytes;
    RestoreResult result = RestoreFailed;
    Records records = {};  // the records that are restored if there is no old database
};

const std::string name = hex("06 00 00 00  41 00 62 00 00 00");
const std::string type = hex("00 00 00 00");
const std::string head = name + type + hex("01 00 00 00");  // of an image with one record and without sort orders
const std::string property = hex("02 00 01 00  05 00  00 00");
const std::string rest = type + hex("01 00 00 00  01 00") + property;  // what follows the name
const Records five = {{number(1, CEVT_I2, SHORT{5})}};
const std::string order = property;  // any eight bytes
// The bytes after the property with the wrong size look like whole properties.
const std::string beforeHuge = name + type + hex("02 00 00 00  02 00");
const std::string afterHuge = property + property + hex("01 00") + property;

TEST_F(DatabaseImageTest, OldDatabaseStaysUnlessADamagedImageCanBeRestored)
{
    const Damage damages[] = {
        {"Name size of 0", hex("00 00 00 00") + rest},
        {"Empty name", hex("02 00 00 00  00 00") + rest},
        {"Name size odd", hex("05 00 00 00  41 00 62 00 00") + rest},
        {"Name without NUL", hex("04 00 00 00  41 00 62 00") + rest},
        {"Name of 261 characters", hex("0A 02 00 00") + repeated(hex("41 00"), 260) + hex("00 00") + rest},
        {"Name that no database can have", hex("06 00 00 00  00 D8 62 00 00 00") + rest},
        {"Name of 4 GiB", hex("FE FF FF FF") + head},
        {"Name that ends early", hex("0A 00 00 00  41 00 62 00 00 00 43 00 00 00") + rest, RestoreDone, five},
        {"Ninety sort orders", name + type + hex("01 00  5A 00") + repeated(order, 90) + hex("01 00") + property,
         RestoreDone, five},
        {"Ninety one sort orders", name + type + hex("01 00  5B 00") + repeated(order, 91) + hex("01 00") + property},
        {"Most sort orders", name + type + hex("01 00  FF FF") + repeated(order, 100)},
        {"More records than there are", name + type + hex("FF FF  00 00  01 00") + property, RestoreFailed, five},
        {"More properties than there are", head + hex("FF FF") + repeated(property, 300)},
        {"Text of 4 GiB", beforeHuge + hex("1F 00 01 00  FE FF FF FF") + afterHuge},
        {"Blob of 4 GiB", beforeHuge + hex("41 00 01 00  FF FF FF FF") + afterHuge},
        {"Text of size 0", head + hex("01 00  1F 00 01 00  00 00 00 00  00 00"), RestoreDone, {{text(1, u"")}}},
        {"Text without NUL",
         head + hex("01 00  1F 00 01 00  02 00 00 00  42 00  00 00"),
         RestoreDone,
         {{text(1, u"B")}}},
        {"Text of half a character",
         head + hex("01 00  1F 00 01 00  03 00 00 00  42 00 43  00 00"),
         RestoreDone,
         {{text(1, u"B")}}},
        {"Unknown type",
         head + hex("01 00  E7 03 01 00  09 00"),
         RestoreDone,
         {{{propertyId(1, 999), std::string(16, '\0'), 9}}}},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        gQuestions.yes = true;
        EXPECT_EQ(restore(damage.bytes), damage.result);
        if (exists(u"Ab") || damage.result == RestoreDone) {
            EXPECT_EQ(recordsOf(u"Ab"), damage.records);
            EXPECT_TRUE(remove(u"Ab"));
        }
        makeOld(u"Ab");
        EXPECT_EQ(restore(damage.bytes), damage.result);
        EXPECT_EQ(isOld(u"Ab"), damage.result == RestoreFailed);
        EXPECT_TRUE(remove(u"Ab"));
    }
}

TEST_F(DatabaseImageTest, LongNameIsCutByTheStoreAndReplacingItsDatabaseIsAskedAbout)
{
    const std::string longName(200, 'n');
    const std::string bytes = hex("92 01 00 00") + repeated(hex("6E 00"), 200) + hex("00 00") + rest;
    EXPECT_EQ(restore(bytes, longName), RestoreDone);
    EXPECT_EQ(recordsOf(std::u16string(31, u'n')), five);
    EXPECT_EQ(restore(bytes, longName), RestoreDeclined);
    ASSERT_EQ(gQuestions.asked.size(), 1U);
    EXPECT_EQ(gQuestions.asked[0], std::u16string(200, u'n'));
}

// A changed bit in the database's row in device.db can change its count of records.
TEST_F(DatabaseImageTest, DatabaseWithAWrongCountOfRecordsIsReportedAndGivesNoImage)
{
    using namespace platform::kernel;
    for (const std::string count : {"1", "3"}) {
        SCOPED_TRACE(count);
        const std::u16string name = u"counts " + std::u16string(count.begin(), count.end());
        create(name, 0, {{text(1, u"first")}, {text(1, u"second")}});
        {
            const platform::database::DatabaseUse use;
            ASSERT_EQ(use->execute("UPDATE store_database SET records = " + count), platform::database::Step::Done);
        }
        const std::size_t before = troublesOf(Trouble::Reading, Troubled::Database).size();
        EXPECT_EQ(DumpDatabase(name.c_str()), 0);
        EXPECT_EQ(troublesOf(Trouble::Reading, Troubled::Database).size(), before + 1);

        const OpenDatabase reader(name, CEDB_AUTOINCREMENT);
        EXPECT_FALSE(read(reader).empty());
        EXPECT_FALSE(read(reader).empty());
        EXPECT_EQ(errorOf(!read(reader).empty()), ERROR_GEN_FAILURE);
    }
}

}  // namespace
