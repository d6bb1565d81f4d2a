// A kill at any call of a restore leaves the old database or the new one. Without an old one, it leaves the first
// records of the new one.

#include "image_fixture.h"
#include "killed_process.h"

namespace {

constexpr DWORD OldType = 9;
constexpr DWORD NewType = 7;

class RestoreKillTest : public DatabaseImageTest {
protected:
    RestoreKillTest() { gQuestions.yes = true; }

    // The image of these records, in the image's order, and a device that may have an old database of that name.
    void prepare(Records records, bool withOld)
    {
        imaged_ = std::move(records);
        create(u"A", NewType, reversed(imaged_));
        ASSERT_TRUE(DumpDatabase(u"A"));
        ASSERT_TRUE(remove(u"A"));
        if (withOld)
            create(u"A", OldType, old_);
        create(u"Other", OldType);
        close();
        fs::copy_file(at("device.db"), at("before.db"));
    }
    // False once the restore ended by itself.
    [[nodiscard]] bool killedRestore(int calls) const
    {
        fs::remove(at("device.db-wal"));
        fs::copy_file(at("before.db"), at("device.db"), fs::copy_options::overwrite_existing);
        return killedBeforeCall(calls, [&] {
            open();
            _exit(RestoreDatabase(u"\\A.CDB") == RestoreDone ? 0 : 1);
        });
    }
    // How many records of the image the database has; -1 for the old one, -2 for none.
    [[nodiscard]] int found() const
    {
        open();  // which checks every page of it
        EXPECT_TRUE(exists(u"Other"));
        if (!exists(u"A"))
            return -2;
        const Records records = recordsOf(u"A");
        EXPECT_EQ(infoOf(u"A").wNumRecords, records.size());
        if (infoOf(u"A").dwDbaseType == OldType) {
            EXPECT_EQ(records, old_);
            return -1;
        }
        EXPECT_LE(records.size(), imaged_.size());
        EXPECT_TRUE(std::equal(records.begin(), records.end(), imaged_.begin()));
        return static_cast<int>(records.size());
    }
    [[nodiscard]] int whole() const { return static_cast<int>(imaged_.size()); }

private:
    const Records old_ = {{text(1, u"old")}, {blob(2, "old too")}};
    Records imaged_;
};

TEST_F(RestoreKillTest, KillAtAnyCallLeavesTheOldOrTheNewDatabaseWhole)
{
    Record large;  // more than one write of the usual size
    for (WORD i = 0; i < 300; ++i)
        large.push_back(number(i, CEVT_I4, LONG{i}));
    prepare({{text(1, u"first"), number(2, CEVT_I4, LONG{1})},
             large,
             {blob(1, std::string(9000, 'b'))},
             {text(1, u"last")}},
            true);
    std::vector<int> seen;
    bool killed = true;
    for (int calls = 0; killed; ++calls) {
        SCOPED_TRACE(calls);
        killed = killedRestore(calls);
        seen.push_back(found());
        close();
        if (HasFailure())
            return;
    }
    const auto firstNew = std::find(seen.begin(), seen.end(), whole());
    EXPECT_EQ(std::count(seen.begin(), firstNew, -1), firstNew - seen.begin());
    EXPECT_EQ(std::count(firstNew, seen.end(), whole()), seen.end() - firstNew);
    EXPECT_NE(firstNew, seen.begin());
    EXPECT_NE(firstNew, seen.end());
}

TEST_F(RestoreKillTest, KillBetweenTwoFlushesOfANewDatabaseLosesOnlyItsLastRecords)
{
    Records records;
    for (char i = 'a'; i < 'e'; ++i)
        records.push_back({number(1, CEVT_UI2, WORD(i)), blob(2, std::string(3'000'000, i))});
    prepare(records, false);
    int between = 0;
    // A step that shares no factor with the calls of a page.
    for (int calls = 1000; killedRestore(calls); calls += 1597) {
        SCOPED_TRACE(calls);
        const int state = found();
        close();
        between += state > 0 && state < whole() ? 1 : 0;
        if (HasFailure())
            return;
    }
    EXPECT_EQ(found(), whole());
    EXPECT_GT(between, 0);
}

}  // namespace
