// removable_test.cpp - a medium that is mounted and unmounted while the program runs. The test uses a tmpfs that is
// also mounted at a second path. So its content can be read after the first path is unmounted.
#include "file_fixture.h"

#include <sys/mount.h>

#include <atomic>
#include <thread>

namespace {

using namespace std::chrono_literals;

class RemovableTest : public FileTest {
protected:
    void SetUp() override
    {
        for (const auto& folder : {medium_, place_})
            std::filesystem::create_directory(folder);
        if (::mount("none", medium_.c_str(), "tmpfs", 0, "size=4m") != 0)
            GTEST_SKIP() << "mounting a file system needs the administrator";
        insert();
    }
    void TearDown() override
    {
        platform::file::removeAllMounts();
        ::umount2(place_.c_str(), MNT_DETACH);
        ::umount2(medium_.c_str(), MNT_DETACH);
    }

    void insert()
    {
        ASSERT_EQ(::mount(medium_.c_str(), place_.c_str(), nullptr, MS_BIND, nullptr), 0);
        ASSERT_TRUE(
            platform::file::addRemovable({u"Stick", place_, [this] { return refusal_ != 0 ? refusal_ : opened(); }}));
    }
    int opened() const { return ::open(place_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }
    bool unmount(int flags = 0) const { return ::umount2(place_.c_str(), flags) == 0; }

    std::filesystem::path medium_ = outside() / "medium";
    std::filesystem::path place_ = outside() / "place";
    int refusal_ = 0;
};

TEST_F(RemovableTest, RemovableCardComesAndGoesAndItsPathsNeverLeadToTheRoot)
{
    EXPECT_EQ(list(u"\\*"), std::set<std::u16string>{u"Stick"});
    EXPECT_EQ(GetFileAttributesW(u"\\Stick"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
    EXPECT_EQ(openError(u"\\Stick\\f", GENERIC_WRITE, CREATE_NEW), 0U);
    EXPECT_TRUE(std::filesystem::exists(medium_ / "f"));
    EXPECT_TRUE(FlushChangedVolumes());
    refusal_ = -EWOULDBLOCK;  // another device uses it
    platform::file::closeUnusedFolders(0ms);
    EXPECT_EQ(openError(u"\\Stick\\f", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    refusal_ = 0;

    EXPECT_TRUE(platform::file::removeRemovable(u"Stick"));
    EXPECT_EQ(list(u"\\*"), std::set<std::u16string>{});
    for (const auto* path : {u"\\Stick", u"\\Stick\\f"})
        EXPECT_EQ(openError(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_NOT_READY);
    EXPECT_FALSE(CreateDirectoryW(u"\\Stick", nullptr));
    EXPECT_FALSE(std::filesystem::exists(root() / "Stick"));

    EXPECT_TRUE(unmount());
    insert();
    EXPECT_EQ(list(u"\\Stick\\*"), std::set<std::u16string>{u"f"});
    EXPECT_FALSE(platform::file::addRemovable({u"Stick", place_, {}})) << "the name is taken";
}

TEST_F(RemovableTest, HostCanUnmountARemovableCardOnlyWhenNothingUsesIt)
{
    const HANDLE file = open(u"\\Stick\\f", GENERIC_WRITE, CREATE_NEW);
    platform::file::closeUnusedFolders(0ms);
    EXPECT_FALSE(unmount()) << "a file is open";
    EXPECT_EQ(write(file, "x"), 1U);
    CloseHandle(file);
    // A temporary file is made and deleted repeatedly, so the program keeps its folder open.
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(openError(u"\\Stick\\t", GENERIC_WRITE, CREATE_ALWAYS), 0U);
        EXPECT_EQ(openError(u"\\Stick\\t", GENERIC_READ, OPEN_EXISTING), 0U);
        EXPECT_TRUE(DeleteFileW(u"\\Stick\\t"));
    }
    platform::file::closeUnusedFolders(0ms);
    EXPECT_FALSE(unmount()) << "what was written isn't flushed";
    EXPECT_TRUE(FlushChangedVolumes());
    platform::file::closeUnusedFolders(1h);
    EXPECT_FALSE(unmount()) << "it was just used";
    platform::file::closeUnusedFolders(0ms);
    EXPECT_TRUE(unmount());
    EXPECT_EQ(openError(u"\\Stick\\f", GENERIC_READ, OPEN_EXISTING), ERROR_NOT_READY);
    EXPECT_FALSE(std::filesystem::exists(place_ / "f"));
}

// If a file system is unmounted while files are open, the host still accepts writes to these files. But the user may
// have taken the medium out, so each flush and each write must then fail.
TEST_F(RemovableTest, NothingCountsAsFlushedAfterTheMediumWasTakenOut)
{
    const std::u16string names[] = {u"\\Stick\\gathered", u"\\Stick\\straight", u"\\Stick\\closed"};
    const HANDLE gathered = open(names[0], GENERIC_WRITE, CREATE_NEW);
    const HANDLE straight = open(names[1], GENERIC_WRITE, CREATE_NEW);
    EXPECT_EQ(write(gathered, std::string(2000, 'x')), 2000U);
    EXPECT_EQ(write(gathered, std::string(200, 'x')), 200U);
    EXPECT_TRUE(FlushFileBuffers(straight));
    EXPECT_EQ(openError(names[2], GENERIC_WRITE, CREATE_NEW), 0U);
    ASSERT_TRUE(unmount(MNT_DETACH));

    EXPECT_EQ(errorOf(FlushFileBuffers(straight)), ERROR_NOT_READY);
    EXPECT_EQ(write(straight, "x"), 0U);
    EXPECT_EQ(errorOf(SetEndOfFile(straight)), ERROR_NOT_READY);
    EXPECT_EQ(errorOf(FlushFileBuffers(gathered)), ERROR_NOT_READY);
    CloseHandle(gathered);
    CloseHandle(straight);
    EXPECT_TRUE(platform::file::removeRemovable(u"Stick"));
    EXPECT_EQ(errorOf(FlushChangedVolumes()), ERROR_NOT_READY);
    EXPECT_TRUE(FlushChangedVolumes()) << "reported once";
}

TEST_F(RemovableTest, RemovableCardCanComeAndGoWhileAnotherThreadUsesIt)
{
    std::atomic<bool> ends = false;
    std::thread user([&] {
        while (!ends) {
            (void)list(u"\\*");
            (void)openError(u"\\Stick\\f", GENERIC_WRITE, CREATE_ALWAYS);
            (void)FlushChangedVolumes();
        }
    });
    for (int times = 0; times < 200; ++times) {
        platform::file::closeUnusedFolders(0ms);
        EXPECT_TRUE(platform::file::removeRemovable(u"Stick"));
        EXPECT_TRUE(platform::file::addRemovable({u"Stick", place_, [this] { return opened(); }}));
    }
    ends = true;
    user.join();
    EXPECT_EQ(openError(u"\\Stick\\f", GENERIC_WRITE, CREATE_ALWAYS), 0U);
}

}  // namespace
