#include "device/device.h"
#include "host_folder.h"

#include "ce/file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/xattr.h>

namespace {

namespace fs = std::filesystem;
using platform::device::openDevice;

// The folder in which a new device is made, inside its own folder, until it is complete.
constexpr const char* Unfinished = ".quillbox-unfinished";

class FirstStartTest : public HostFolder {
protected:
    void makeFresh(const std::string& name) const
    {
        const auto result = openDevice(at(name), {}, true);
        ASSERT_TRUE(result.device) << result.error.sentence;
    }
    // Moves parts of a complete device back into that folder, as a kill would leave them.
    void undo(const std::string& name, const std::vector<std::string>& parts) const
    {
        fs::create_directories(at(name) / Unfinished);
        for (const std::string& part : parts)
            fs::rename(at(name) / part, at(name) / Unfinished / part);
    }
};

// What it holds is compared by fresh_device_test.py.
TEST_F(FirstStartTest, FreshDeviceHasACardAndFilesInRom)
{
    const auto result = openDevice(at("deep/er/device"), {}, true);
    ASSERT_TRUE(result.device) << result.error.sentence;
    EXPECT_EQ(GetFileAttributesW(u"\\Storage Card"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);

    write(at("probe"), "");
    const bool attributesKept = setxattr(at("probe").c_str(), "user.DOSATTRIB", "0x1", 3, 0) == 0;
    EXPECT_EQ(GetFileAttributesW(u"\\Windows\\calc.rom"),
              attributesKept ? FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY
                             : INVALID_FILE_ATTRIBUTES);
}

TEST_F(FirstStartTest, StartAfterAKillAtAnyMomentMakesAWholeDevice)
{
    makeFresh("whole");
    const auto whole = treeOf(at("whole"));

    fs::create_directory(at("only made"));
    write(at("only locked/device.lock"), "");
    write(at("half written") / Unfinished / "object-store/My Documents/Welcome.txt", "We");
    write(at("half written") / Unfinished / "device.db", "");
    write(at("half written/device.lock"), "");
    const std::pair<const char*, std::vector<std::string>> unmoved[] = {
        {"nothing moved", {"cards", "device.db", "object-store"}},
        {"cards moved", {"device.db", "object-store"}},
        {"database moved", {"object-store"}},
        {"all moved", {}},
    };
    for (const auto& [name, parts] : unmoved) {
        makeFresh(name);
        undo(name, parts);
    }
    for (const auto& folder : fs::directory_iterator(at("."))) {
        const std::string name = folder.path().filename();
        SCOPED_TRACE(name);
        makeFresh(name);
        EXPECT_EQ(treeOf(at(name)), whole);
    }
}

TEST_F(FirstStartTest, WhatTheUserChangesStaysAtTheNextStart)
{
    makeFresh("device");
    fs::remove(at("device/object-store/My Documents/Welcome.txt"));
    makeFresh("device");
    EXPECT_FALSE(fs::exists(at("device/object-store/My Documents/Welcome.txt")));
    undo("device", {"object-store"});
    write(at("device/cards/Storage Card/mine.txt"), "mine");
    makeFresh("device");
    EXPECT_TRUE(fs::exists(at("device/cards/Storage Card/mine.txt")));
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
