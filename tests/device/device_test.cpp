#include "device/device.h"
#include "device/remembered_folders.h"
#include "host_folder.h"

#include "ce/file.h"
#include "ce/registry.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using platform::device::ExtraFolder;
using platform::device::openDevice;
using platform::device::OpenResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class DeviceTest : public HostFolder {
protected:
    [[nodiscard]] OpenResult opened(const std::vector<ExtraFolder>& extras = {}) const
    {
        auto result = openDevice(at("device"), extras, false);
        EXPECT_EQ(result.error.sentence, "");
        EXPECT_TRUE(result.device);
        return result;
    }
    void expectRefusal(const std::string& sentence, const std::vector<ExtraFolder>& extras = {},
                       bool inUse = false) const
    {
        const auto result = openDevice(at("device"), extras, false);
        EXPECT_EQ(result.device, nullptr);
        EXPECT_EQ(result.error.inUse, inUse) << result.error.sentence;
        EXPECT_THAT(result.error.sentence, HasSubstr(sentence));
    }
    static DWORD attributes(const WCHAR* path) { return GetFileAttributesW(path); }
    static DWORD writeFile(const WCHAR* path, DWORD bytes)
    {
        const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        const std::string content(bytes, 'x');
        (void)WriteFile(file, content.data(), bytes, &written, nullptr);
        CloseHandle(file);
        return written;
    }
};

TEST_F(DeviceTest, DeviceCannotBeOpenedTwiceAndTheRefusalLeavesTheOpenOneUsable)
{
    auto first = opened();
    expectRefusal("is open in another Quillbox", {}, true);
    EXPECT_EQ(writeFile(u"\\still there.txt", 5), 5U);
    EXPECT_EQ(RegSetValueExW(HKEY_USERS, u"v", 0, REG_NONE, nullptr, 0), 0);
    EXPECT_THAT(openDevice(at("other device"), {}, false).error.sentence, HasSubstr("another device open"));
    EXPECT_NE(attributes(u"\\still there.txt"), INVALID_FILE_ATTRIBUTES);
    first.device.reset();
    EXPECT_EQ(attributes(u"\\still there.txt"), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(opened().device);
}

TEST_F(DeviceTest, EachFolderInCardsIsACardButNoLinkOrFileIs)
{
    hostWrite(at("device/object-store/a.txt"), "a");
    fs::create_directories(at("device/cards/Störage \xFF"));
    fs::create_directory_symlink(at("device/object-store"), at("device/cards/Link"));
    hostWrite(at("device/cards/readme"), "no card");
    const auto device = opened();
    EXPECT_EQ(attributes(u"\\Störage \xF7FF"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
    EXPECT_EQ(attributes(u"\\Link"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(attributes(u"\\readme"), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(attributes(u"\\a.txt"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(DeviceTest, PartsThatADeviceLacksAreMadeEmpty)
{
    hostWrite(at("device/object-store/a.txt"), "a");
    ASSERT_TRUE(openDevice(at("device"), {}, true).device);
    EXPECT_THAT(treeOf(at("device")),
                testing::UnorderedElementsAre(Pair("cards", ""), Pair("device.db", ""), Pair("device.lock", ""),
                                              Pair("object-store", ""), Pair("object-store/a.txt", "a")));
}

TEST_F(DeviceTest, WhatIsNoDeviceIsRefusedWithTheReasonAndLeftAlone)
{
    hostWrite(at("device/letter.txt"), "mine");
    expectRefusal("is not a device");
    EXPECT_EQ(treeOf(at("device")).size(), 1U);
    fs::remove_all(at("device"));
    hostWrite(at("device"), "a file");
    expectRefusal("is not a folder");
    fs::remove(at("device"));

    fs::create_directory(at("device"));
    fs::create_directory_symlink(at("."), at("device/object-store"));
    expectRefusal("object-store\" must be a folder");
    for (const auto& [part, reason] : {std::pair("device/object-store", "object-store\" must be a folder"),
                                       std::pair("device/cards", "cards\" must be a folder"),
                                       std::pair("device/device.db", "device.db\" is damaged")}) {
        fs::remove_all(at(part));
        hostWrite(at(part), std::string(5000, '?'));
        expectRefusal(reason);
        fs::remove(at(part));
        fs::create_directories(at("device/object-store"));
    }
    EXPECT_TRUE(opened().device) << "a refused device is still locked";
    if (geteuid() == 0)
        return;  // the superuser may write anywhere
    fs::permissions(at("device"), fs::perms::owner_read | fs::perms::owner_exec);
    expectRefusal("can't be written to: Permission denied");
    fs::permissions(at("device"), fs::perms::owner_all);
}

TEST_F(DeviceTest, ContentThatAFolderHidesIsReported)
{
    for (const char* folder : {"device/object-store/Empty", "host"})
        fs::create_directories(at(folder));
    hostWrite(at("device/object-store/Held/file"), "x");
    EXPECT_THAT(opened({{"Held", at("host"), true, {}}}).warnings,
                ElementsAre(HasSubstr("object-store/Held\" is hidden")));
    EXPECT_THAT(opened({{"Empty", at("host"), true, {}}}).warnings, IsEmpty());
    EXPECT_THAT(opened({{"Other", at("host"), true, {}}}).warnings, IsEmpty());
}

TEST_F(DeviceTest, OnlyADatabaseThatWasThereIsReportedAsLost)
{
    // A folder with files of the user that was never opened as a device.
    hostWrite(at("device/object-store/a.txt"), "");
    hostWrite(at("device/cards"), "");
    expectRefusal("cards\" must be a folder");
    fs::remove(at("device/cards"));
    fs::remove(at("device/object-store/a.txt"));
    EXPECT_THAT(opened().warnings, IsEmpty());
    EXPECT_THAT(opened().warnings, IsEmpty());
    fs::remove(at("device/device.db"));
    EXPECT_THAT(opened().warnings, ElementsAre(HasSubstr("device.db\" is missing")));
    EXPECT_THAT(opened().warnings, IsEmpty());
    fs::resize_file(at("device/device.db"), 0);
    EXPECT_THAT(opened().warnings, ElementsAre(HasSubstr("device.db\" is empty")));
}

TEST_F(DeviceTest, LeftoversOfAKilledDatabaseChangeAreDeletedBesideTheTargetOfALink)
{
    ASSERT_TRUE(opened().device);
    fs::create_directories(at("elsewhere"));
    fs::rename(at("device/device.db"), at("elsewhere/real.db"));
    fs::create_symlink(at("elsewhere/real.db"), at("device/device.db"));
    hostWrite(at("device/device.db.changing"), "somebody else's");
    for (const char* part : {"", "-wal", "-shm", "-journal"})
        hostWrite(at(std::string("elsewhere/real.db.changing") + part), "left over");
    ASSERT_TRUE(opened().device);
    EXPECT_EQ(treeOf(at("elsewhere")).size(), 1U);
    EXPECT_TRUE(fs::exists(at("device/device.db.changing")));
}

TEST_F(DeviceTest, ExtraFoldersThatCannotBeShownAreRefusedWithTheirName)
{
    for (const char* folder : {"device/object-store", "device/cards/Card", "x"})
        fs::create_directories(at(folder));
    hostWrite(at("file"), "");
    for (const char* name : {"", ".", "..", "a/b", "a\\b", "a*", "\xFF", "\xEF\x9C\xAF"})
        expectRefusal("can't be the name", {{name, at("x"), false, {}}});
    expectRefusal("missing\" for \"X\" can't be opened: No such", {{"X", at("missing"), true, {}}});
    expectRefusal("is not a folder", {{"X", at("file"), true, {}}});
    expectRefusal("two folders named \"Card\"", {{"Card", at("x"), true, {}}});
    expectRefusal("is on the device already, as \"\\X\"",
                  {{"X", at("x"), true, {}}, {"Y", at("device/../x"), false, {}}});
    expectRefusal("is on the device already", {{"X", at("device/object-store"), false, {}}});
    EXPECT_TRUE(opened({{"X", at("x"), true, {}}}).device);
}

TEST_F(DeviceTest, CardIsUsedByOneDeviceAtATimeButAPlainFolderIsShared)
{
    fs::create_directories(at("stick"));
    const ExtraFolder card{"Stick", at("stick"), true, {}};
    const int other = ::open(at("stick").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    expectRefusal("stick\" is in use by another Quillbox device", {card}, true);
    EXPECT_TRUE(opened({{"Stick", at("stick"), false, {}}}).device);
    ASSERT_EQ(flock(other, LOCK_UN), 0);
    const auto device = opened({card});
    EXPECT_NE(flock(other, LOCK_EX | LOCK_NB), 0);
    close(other);
}

TEST_F(DeviceTest, ExtraFoldersLastForOneStartUnlessRememberedAndACardKeepsItsCapacity)
{
    using namespace platform::device;
    constexpr DWORD Folder = FILE_ATTRIBUTE_DIRECTORY;
    constexpr DWORD Card = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;
    hostWrite(at("stick/full.txt"), "1234567890");
    hostWrite(at("documents/a.txt"), "a");
    {
        const auto device = opened({{"Mine", at("documents"), false, {}}, {"Today", at("stick"), true, 25}});
        EXPECT_EQ(attributes(u"\\Mine"), Folder);
        EXPECT_EQ(attributes(u"\\Today"), Card);
        EXPECT_EQ(writeFile(u"\\Today\\more.txt", 20), 15U);
        ASSERT_TRUE(rememberFolder({"Stick", at("stick"), true, 100}));
        ASSERT_TRUE(rememberFolder({"Away", at("missing"), true, {}}));
        ASSERT_TRUE(rememberFolder({"Gone", at("documents"), false, {}}));
        EXPECT_FALSE(rememberFolder({"a/b", at("stick"), true, {}}));
        EXPECT_TRUE(forgetFolder("Gone"));
        EXPECT_FALSE(forgetFolder("Gone"));
    }
    {
        const auto device = opened();
        EXPECT_EQ(attributes(u"\\Stick"), Card);
        EXPECT_EQ(writeFile(u"\\Stick\\a", 200), 75U);
        for (const WCHAR* absent : {u"\\Mine", u"\\Today", u"\\Away", u"\\Gone"})
            EXPECT_EQ(attributes(absent), INVALID_FILE_ATTRIBUTES);
    }
    const auto device = opened({{"Stick", at("documents"), false, {}}});
    EXPECT_EQ(attributes(u"\\Stick"), Folder) << "what is given for this start counts";
}

// A new device is made in a folder of this name inside the device's folder, until it is complete.
constexpr const char* Unfinished = ".quillbox-unfinished";

class FirstStartTest : public HostFolder {
protected:
    void makeFresh(const std::string& name) const
    {
        const auto result = openDevice(at(name), {}, true);
        ASSERT_TRUE(result.device) << result.error.sentence;
    }
    // Moves parts of a complete device back into the folder Unfinished. A kill during the first start leaves such a
    // state.
    void undo(const std::string& name, const std::vector<std::string>& parts) const
    {
        fs::create_directories(at(name) / Unfinished);
        for (const std::string& part : parts)
            fs::rename(at(name) / part, at(name) / Unfinished / part);
    }
};

// fresh_device_test.py compares the whole content of a fresh device.
TEST_F(FirstStartTest, FreshDeviceHasACardAndFilesInRom)
{
    const auto result = openDevice(at("deep/er/device"), {}, true);
    ASSERT_TRUE(result.device) << result.error.sentence;
    EXPECT_EQ(GetFileAttributesW(u"\\Storage Card"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);

    hostWrite(at("probe"), "");
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
    hostWrite(at("only locked/device.lock"), "");
    hostWrite(at("half written") / Unfinished / "object-store/My Documents/Welcome.txt", "We");
    hostWrite(at("half written") / Unfinished / "device.db", "");
    hostWrite(at("half written/device.lock"), "");
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
    hostWrite(at("device/cards/Storage Card/mine.txt"), "mine");
    makeFresh("device");
    EXPECT_TRUE(fs::exists(at("device/cards/Storage Card/mine.txt")));
    undo("device", {"object-store"});
    hostWrite(at("device/mine.txt"), "mine");
    EXPECT_FALSE(openDevice(at("device"), {}, true).device);
    EXPECT_TRUE(fs::exists(at("device/mine.txt")));
}

TEST_F(FirstStartTest, DefaultFolderIsBelowXdgDataHomeOrElseHomeAndOnlyIfThePathIsAbsolute)
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
