// set_verification_test.cpp - the verification of a stored set reports each item that differs from what was read.

#include "engine_fixture.h"
#include "set_verification.h"

#include "engine/questions.h"
#include "engine/stored_digests.h"
#include "set/block_codec.h"

#include "ce/outcome.h"

#include <random>

HINSTANCE gInstance;

namespace {

using namespace platform::kernel;

class SetVerificationTest : public EngineTest {
protected:
    SetVerificationTest()
    {
        gDigestsBlocks = true;
        gStoredDigests.clear();
    }
    ~SetVerificationTest() override { gDigestsBlocks = false; }

    static std::vector<std::u16string> reported()
    {
        BeginJob();
        VerifyStoredSet(u"\\Card\\QUILBOX\\QLBX0001.QLT");
        std::vector<std::u16string> names;
        for (const NamedTrouble& trouble : troublesOf(Trouble::Storing, Troubled::File, Since::Job))
            names.push_back(trouble.name);
        return names;
    }
};

}  // namespace

TEST_F(SetVerificationTest, SoundSetPassesAndEveryChangedBitOfAnItemIsFound)
{
    std::mt19937 random(1);
    const std::string large = patternBytes(300'000);
    for (const auto& [name, content] :
         {std::pair("empty", std::string()), {"large", large}, {"small", large.substr(0, 2000)}}) {
        write(name, content);
        mark(u"\\" + std::u16string(name, name + std::string_view(name).size()));
    }
    backUp();
    EXPECT_EQ(gStoredDigests.size(), 3U);
    EXPECT_EQ(reported(), std::vector<std::u16string>());

    const std::string data = readOnCard("QLBX0001.QDT");
    for (int round = 0; round < 200; round++) {
        std::string changed = data;
        const std::size_t at = random() % data.size();
        changed[at] = static_cast<char>(changed[at] ^ 1 << random() % 8);
        writeOnCard("QLBX0001.QDT", changed);
        EXPECT_EQ(reported().size(), 1U) << at;
    }
    writeOnCard("QLBX0001.QDT", data);
    gStoredDigests.pop_back();
    EXPECT_EQ(reported().size(), 2U) << "an item that was never read, and so the list";
}
