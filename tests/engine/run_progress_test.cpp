// run_progress_test.cpp - the progress that a run reports to the host.
#include "engine_fixture.h"

#include "kernel/run_progress.h"

#include "ce/progress.h"

#include <algorithm>
#include <array>

namespace {

using platform::kernel::RunProgress;
using platform::kernel::runProgress;

// The progress at the message for an item, before the item is begun.
struct SeenProgress {
    DWORD itemsDone;
    std::uint64_t bytesDone;
    bool underway;
    bool operator==(const SeenProgress&) const = default;
};

class RunProgressTest : public EngineTest {
protected:
    RunProgressTest()
    {
        gFullFiles = 1;
        gFullDatabases = gFullRegistry = 0;
        gUser.seesMessage = [this](const std::u16string&) {
            const RunProgress now = runProgress();
            seen_.push_back({now.itemsDone, now.bytesDone, now.underway});
        };
    }

    std::vector<SeenProgress> seen_;
};

TEST_F(RunProgressTest, HostLearnsWhatIsDoneAndWhatIsToDoOfItemsAndBytes)
{
    openStore();
    makeDatabase(u"Notes", 1);
    write("small", std::string(100, 's'));
    write("large", std::string(300000, 'l'));
    gFullDatabases = 1;
    const unsigned before = runProgress().number;
    RunFullBackup();

    const RunProgress stored = runProgress();
    EXPECT_EQ(stored.number, before + 1);
    EXPECT_EQ(stored.run, RunStores);
    EXPECT_FALSE(stored.underway);
    EXPECT_EQ(stored.listPath, u"\\Card\\QUILBOX\\QLBX0001.QLT");
    EXPECT_EQ(stored.items, 3U);
    EXPECT_EQ(stored.bytes, 300100U);
    EXPECT_EQ(stored.itemsDone, 3U);
    EXPECT_EQ(stored.made, (std::array<DWORD, 3>{2, 1, 0}));
    EXPECT_GT(stored.bytesDone, 300100U);  // includes the bytes of the database
    ASSERT_EQ(seen_.size(), 3U);
    EXPECT_EQ(seen_[0], (SeenProgress{0, 0, true}));
    EXPECT_TRUE(seen_[1] == (SeenProgress{1, 100, true}) || seen_[1] == (SeenProgress{1, 300000, true}));
    EXPECT_EQ(seen_[2], (SeenProgress{2, 300100, true}));

    gUser.choice = u"\\Card\\QUILBOX\\QLBX0001.QLT";
    seen_.clear();
    RunRestore(RestoreFull);
    const RunProgress restored = runProgress();
    EXPECT_EQ(restored.number, before + 2);
    EXPECT_EQ(restored.run, RunRestores);
    EXPECT_FALSE(restored.underway);
    EXPECT_EQ(restored.itemsDone, 3U);
    EXPECT_EQ(restored.made, (std::array<DWORD, 3>{2, 0, 0}));  // the user kept the database
    EXPECT_EQ(restored.bytes, readOnCard("QLBX0001.QDT").size());
    EXPECT_EQ(restored.bytesDone, restored.bytes);
    EXPECT_EQ(seen_.back().itemsDone, 2U);
}

TEST_F(RunProgressTest, FilesThatWereReadAheadAreCountedInTheBytesDone)
{
    for (int file = 0; file < 300; file++)
        write("small " + std::to_string(file), std::string(1000, 's'));
    RunFullBackup();
    EXPECT_EQ(runProgress().itemsDone, 300U);
    EXPECT_EQ(runProgress().bytesDone, 300000U);
}

TEST_F(RunProgressTest, BytesDoneGrowWhileOneLargeFileIsBackedUp)
{
    const std::string content = patternBytes(3'000'000);
    write("large", content);
    mark(u"\\large");
    std::uint64_t most = 0;
    gUser.seesCount = [&] { most = std::max(most, runProgress().bytesDone); };
    backUp();
    EXPECT_GT(most, 0U);
    EXPECT_EQ(runProgress().bytesDone, content.size());
}

}  // namespace
