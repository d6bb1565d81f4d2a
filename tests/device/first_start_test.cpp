#include "device/device.h"
#include "host_folder.h"

#include "ce/file.h"
#include "ce/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/xattr.h>

namespace {

namespace fs = std::filesystem;
using platform::device::openDevice;

// Where a device grows before it is one.
constexpr const char* Unfinished = ".quillbox-unfinished";

class FirstStartTest : public HostFolder {
protected:
    void makeFresh(const std::string& name) const
    {
        const auto result = openDevice(at(name), {}, true);
        ASSERT_TRUE(result.device) << result.error.sentence;
    }
    // Puts parts of a finished device back where they stood before their move, as a kill would leave them.
    void undo(const std::string& name, const std::vector<std::string>& parts) const
    {
        fs::create_directories(at(name) / Unfinished);
        for (const std::string& part : parts)
            fs::rename(at(name) / part, at(name) / Unfinished / part);
    }
};

TEST_F(FirstStartTest, FreshDeviceHasSomethingToBackUpOfEachKind)
{
    const auto result = openDevice(at("deep/er/device"), {}, true);
    ASSERT_TRUE(result.device) << result.error.sentence;
    std::uintmax_t bytes = 0;
    std::size_t empty = 0;
    for (const auto& [name, content] : treeOf(at("deep/er/device/object-store"))) {
        bytes += content.size();
        empty += content.empty() && fs::is_regular_file(at("deep/er/device/object-store") / name) ? 1 : 0;
    }
    EXPECT_GT(bytes, 700'000U);
    EXPECT_LT(bytes, 1'500'000U);
    EXPECT_EQ(empty, 1U);
    EXPECT_NE(GetFileAttributesW(u"\\My Documents\\Notes\\予定.txt"), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(GetFileAttributesW(u"\\Storage Card") & FILE_ATTRIBUTE_TEMPORARY, 0U);
    DWORD size = 0;
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, u"ControlPanel\\Owner", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              &disposition),
              0);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(RegQueryValueExW(key, u"Name", nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, 22U);  // ten characters and the NUL

    const std::string probe = at("probe");
    write(probe, "");
    const bool attributesKept = setxattr(probe.c_str(), "user.DOSATTRIB", "0x1", 3, 0) == 0;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(u"\\Windows\\calc.rom", &found);
    ASSERT_EQ(search != INVALID_HANDLE_VALUE, attributesKept);  // without attributes there is no ROM
    if (attributesKept) {
        EXPECT_EQ(found.dwFileAttributes, FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY);
        FindClose(search);
    }
}

TEST_F(FirstStartTest, EveryFreshDeviceIsTheSameAndASecondStartChangesNothing)
{
    makeFresh("one");
    makeFresh("two");
    const auto tree = treeOf(at("one"));
    EXPECT_EQ(treeOf(at("two")), tree);
    fs::remove(at("one/object-store/My Documents/Welcome.txt"));
    makeFresh("one");
    EXPECT_FALSE(fs::exists(at("one/object-store/My Documents/Welcome.txt")));
}

TEST_F(FirstStartTest, KillAtAnyMomentLeavesNoHalfDevice)
{
    makeFresh("whole");
    const auto whole = treeOf(at("whole"));

    fs::create_directory(at("only made"));
    write(at("only locked/device.lock"), "");
    write(at("half written") / Unfinished / "object-store/My Documents/Welcome.txt", "We");
    write(at("half written") / Unfinished / "device.db", "");
    write(at("half written/device.lock"), "");
    const std::vector<std::pair<std::string, std::vector<std::string>>> unmoved = {
        {"nothing moved", {"cards", "device.db", "object-store"}},
        {"cards moved", {"device.db", "object-store"}},
        {"database moved", {"object-store"}},
        {"all moved", {}},
    };
    for (const auto& [name, parts] : unmoved) {
        makeFresh(name);
        undo(name, parts);
    }
    for (const char* name :
         {"only made", "only locked", "half written", "nothing moved", "cards moved", "database moved", "all moved"}) {
        SCOPED_TRACE(name);
        makeFresh(name);
        EXPECT_EQ(treeOf(at(name)), whole);
    }
}

TEST_F(FirstStartTest, WhatTheUserPutInMeanwhileIsNotTakenAway)
{
    makeFresh("device");
    undo("device", {"object-store"});
    write(at("device/cards/Storage Card/mine.txt"), "mine");
    makeFresh("device");
    EXPECT_TRUE(treeOf(at("device")).contains("cards/Storage Card/mine.txt"));
    undo("device", {"object-store"});
    write(at("device/mine.txt"), "mine");
    EXPECT_FALSE(openDevice(at("device"), {}, true).device);
    EXPECT_TRUE(fs::exists(at("device/mine.txt")));
}

TEST_F(FirstStartTest, DefaultFolderFollowsTheDataHomeAndElseTheHomeThatIsAbsolute)
{
    setenv("HOME", "/home/someone", 1);
    setenv("XDG_DATA_HOME", "/data", 1);
    EXPECT_EQ(platform::device::defaultDeviceFolder(), "/data/quillbox/device");
    for (const char* useless : {"", "relative"}) {
        setenv("XDG_DATA_HOME", useless, 1);
        setenv("HOME", "/home/someone", 1);
        EXPECT_EQ(platform::device::defaultDeviceFolder(), "/home/someone/.local/share/quillbox/device");
        for (const char* home : {"", "relative"}) {
            setenv("HOME", home, 1);
            EXPECT_EQ(platform::device::defaultDeviceFolder(), std::nullopt);
        }
    }
    unsetenv("XDG_DATA_HOME");
    unsetenv("HOME");
    EXPECT_EQ(platform::device::defaultDeviceFolder(), std::nullopt);
}

}  // namespace
