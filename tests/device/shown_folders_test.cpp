// shown_folders_test.cpp - folders, sets and media that are added to an open device and removed from it.
#include "device/device.h"
#include "device/remembered_folders.h"
#include "host_folder.h"

#include "ce/error.h"
#include "ce/file.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <sys/mount.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr DWORD Card = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

class ShownFoldersTest : public HostFolder {
protected:
    void SetUp() override
    {
        fs::create_directories(at("device/object-store"));
        open();
    }
    void open()
    {
        device_.reset();
        device_ = platform::device::openDevice(at("device"), {}, false).device;
        ASSERT_TRUE(device_);
    }
    static bool eventually(const std::function<bool()>& holds)
    {
        int times = 0;
        for (; times < 3000 && !holds(); ++times)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return times < 3000;
    }
    static bool isThere(const WCHAR* path) { return GetFileAttributesW(path) == Card; }

    std::unique_ptr<platform::device::Device> device_;
};

TEST_F(ShownFoldersTest, FolderIsShownAtOnceAndAtTheNextStartUnderAFreeName)
{
    fs::create_directories(at("device/object-store/Stick"));
    for (const char* folder : {"a/Stick", "b/Stick"})
        fs::create_directories(at(folder));
    EXPECT_EQ(device_->showFolder(at("a/Stick"), true), "");
    EXPECT_EQ(device_->showFolder(at("b/Stick"), false), "");
    EXPECT_THAT(device_->showFolder(at("a/Stick"), true), HasSubstr("on the device already, as \"\\Stick (2)\""));
    EXPECT_THAT(device_->showFolder(at("missing"), true), HasSubstr("No such file"));
    for (int start = 0; start < 2; ++start) {
        EXPECT_TRUE(isThere(u"\\Stick (2)"));
        EXPECT_EQ(GetFileAttributesW(u"\\Stick (3)"), FILE_ATTRIBUTE_DIRECTORY);
        open();
    }
}

TEST_F(ShownFoldersTest, StorageOfASetIsACardForThisStartUnlessTheDeviceHasItAlready)
{
    hostWrite(at("Old/QUILBOX/QLBX0007.QLT"), "");
    hostWrite(at("loose/QLBX0001.QLT"), "");
    hostWrite(at("device/object-store/QUILBOX/QLBX0001.QLT"), "");
    EXPECT_EQ(device_->showSet(at("Old/QUILBOX/QLBX0007.QLT")).listFile, u"\\Old\\QUILBOX\\QLBX0007.QLT");
    EXPECT_EQ(device_->showSet(at("Old/QUILBOX/../QUILBOX/QLBX0007.QLT")).listFile, u"\\Old\\QUILBOX\\QLBX0007.QLT");
    EXPECT_EQ(device_->showSet(at("loose/QLBX0001.QLT")).listFile, u"\\loose\\QLBX0001.QLT");
    EXPECT_EQ(device_->showSet(at("device/object-store/QUILBOX/QLBX0001.QLT")).listFile, u"\\QUILBOX\\QLBX0001.QLT");
    EXPECT_TRUE(isThere(u"\\Old"));
    EXPECT_THAT(device_->showSet(at("Old/QUILBOX")).error, HasSubstr("is no file"));
    EXPECT_THAT(device_->showSet(at("device/device.lock")).error, HasSubstr("ends in QLT"));
    open();
    EXPECT_FALSE(isThere(u"\\Old"));
}

TEST_F(ShownFoldersTest, MediaAreCardsWhileTheyAreMounted)
{
    const fs::path media = at("media");
    const fs::path first = media / "My Stick";
    const fs::path second = media / "second";
    for (const auto& place : {first, second, at("medium")})
        fs::create_directories(place);
    if (::mount("none", first.c_str(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "mounting a file system needs the administrator";
    std::atomic<int> told = 0;
    device_->showMedia({media}, [&] { return ++told % 2 == 0; });  // false, as from a busy program, on every odd call
    EXPECT_TRUE(isThere(u"\\My Stick"));
    EXPECT_FALSE(isThere(u"\\second")) << "nothing is mounted there";
    ASSERT_EQ(::mount("none", second.c_str(), "tmpfs", 0, "size=1m"), 0);
    EXPECT_TRUE(eventually([] { return isThere(u"\\second"); }));
    EXPECT_TRUE(eventually([&] { return told == 2; }));

    // The desktop can unmount what the program doesn't use.
    EXPECT_TRUE(eventually([&] { return ::umount(second.c_str()) == 0; }));
    EXPECT_TRUE(eventually([&] { return told == 4; }));
    EXPECT_EQ(GetFileAttributesW(u"\\second"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
    // A second medium that is mounted at the path of the first one is another card.
    hostWrite(first / "old", "x");
    ASSERT_EQ(::umount2(first.c_str(), MNT_DETACH), 0);
    ASSERT_EQ(::mount("none", first.c_str(), "tmpfs", 0, "size=1m"), 0);
    hostWrite(first / "new", "x");
    EXPECT_TRUE(eventually([] { return GetFileAttributesW(u"\\My Stick\\new") != INVALID_FILE_ATTRIBUTES; }));
    device_.reset();
    EXPECT_EQ(::umount(first.c_str()), 0);
}

}  // namespace
