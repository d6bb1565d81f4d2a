// second_start_test.cpp - a second process of the program reaches the first process on the same device, and no other
// process. rough_desktop_test.py tests that the window then comes to the front.
#include "host_folder.h"
#include "start/second_start.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;
using platform::display::answerSecondStarts;
using platform::display::askFirstStart;

class SecondProcessTest : public HostFolder {
protected:
    SecondProcessTest()
    {
        for (const char* name : {"device", "other"})
            fs::create_directory(folder_ / name);
        setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
    }

    [[nodiscard]] std::ptrdiff_t sockets() const
    {
        const fs::directory_iterator entries(folder_);
        return std::count_if(begin(entries), end(entries), [](const auto& entry) { return entry.is_socket(); });
    }

    fs::path folder_ = at("");
    fs::path device_ = at("device");
};

TEST_F(SecondProcessTest, RequestForTheSameDeviceIsAnsweredAndOneForAnotherDeviceIsNot)
{
    EXPECT_FALSE(askFirstStart(device_));
    const auto first = answerSecondStarts(device_);
    EXPECT_TRUE(askFirstStart(device_)) << "also before the window exists";
    EXPECT_TRUE(askFirstStart(device_ / ".." / "device" / "."));
    EXPECT_FALSE(askFirstStart(folder_ / "other"));

    const auto opener = answerSecondStarts(device_, [](const fs::path& set) { return "can't open " + set.string(); });
    EXPECT_EQ(askFirstStart(device_, "/a/QLBX0001.QLT"), "can't open /a/QLBX0001.QLT");
    EXPECT_EQ(askFirstStart(device_), "") << "only to the front";
}

TEST_F(SecondProcessTest, SocketOfAKilledProcessIsReplacedAndRemovedAtTheEndAndNoneIsMadeWhereOthersMayWrite)
{
    {
        const auto first = answerSecondStarts(device_);
        EXPECT_EQ(sockets(), 1);
        // The state after a kill: the socket still exists when the next first process starts.
        const auto second = answerSecondStarts(device_);
        EXPECT_TRUE(askFirstStart(device_));
    }
    EXPECT_EQ(sockets(), 0);
    EXPECT_FALSE(askFirstStart(device_));
    fs::permissions(folder_, fs::perms::all);
    const auto untrusted = answerSecondStarts(device_);
    EXPECT_EQ(sockets(), 0);
}

}  // namespace
