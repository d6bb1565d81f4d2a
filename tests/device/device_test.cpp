#include "device/device.h"
#include "device/remembered_folders.h"
#include "host_folder.h"

#include "ce/file.h"
#include "ce/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using platform::device::Device;
using platform::device::ExtraFolder;
using platform::device::openDevice;
using testing::HasSubstr;

class DeviceTest : public HostFolder {
protected:
    [[nodiscard]] std::unique_ptr<Device> opened(const std::vector<ExtraFolder>& extras = {}) const
    {
        auto result = openDevice(at("device"), extras, false);
        EXPECT_EQ(result.error.sentence, "");
        return std::move(result.device);
    }
    [[nodiscard]] std::string refusal(const std::vector<ExtraFolder>& extras = {}, bool inUse = false) const
    {
        const auto result = openDevice(at("device"), extras, false);
        EXPECT_EQ(result.device, nullptr);
        EXPECT_EQ(result.error.inUse, inUse) << result.error.sentence;
        return result.error.sentence;
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

TEST_F(DeviceTest, SecondStartIsRefusedWhileTheFirstLivesAndLeavesItAlone)
{
    auto first = opened();
    ASSERT_TRUE(first);
    EXPECT_THAT(refusal({}, true), HasSubstr("is open in another Quillbox"));
    EXPECT_EQ(writeFile(u"\\still there.txt", 5), 5U);
    EXPECT_EQ(RegSetValueExW(HKEY_USERS, u"v", 0, REG_NONE, nullptr, 0), 0);
    EXPECT_THAT(openDevice(at("other device"), {}, false).error.sentence, HasSubstr("another device open"));
    EXPECT_EQ(attributes(u"\\still there.txt") & FILE_ATTRIBUTE_DIRECTORY, 0U);
    first.reset();
    EXPECT_EQ(attributes(u"\\still there.txt"), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(opened());
}

TEST_F(DeviceTest, FoldersInCardsAreCardsAndLinksAndFilesAreNot)
{
    write(at("device/object-store/a.txt"), "a");
    fs::create_directories(at("device/cards/Störage \xFF"));
    fs::create_directory_symlink(at("device/object-store"), at("device/cards/Link"));
    write(at("device/cards/readme"), "no card");
    const auto device = opened();
    ASSERT_TRUE(device);
    EXPECT_EQ(attributes(u"\\Störage \xF7FF"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
    EXPECT_EQ(attributes(u"\\Link"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(attributes(u"\\readme"), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(attributes(u"\\a.txt"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(DeviceTest, WhatIsMissingInADeviceIsMadeWithoutDemonstrationContent)
{
    write(at("device/object-store/a.txt"), "a");
    ASSERT_TRUE(openDevice(at("device"), {}, true).device);
    EXPECT_TRUE(fs::is_directory(at("device/cards")));
    EXPECT_TRUE(fs::exists(at("device/device.db")));
    EXPECT_EQ(treeOf(at("device/object-store")).size(), 1U);
}

TEST_F(DeviceTest, FolderWithOtherFilesIsRefusedAndNothingIsPutIntoIt)
{
    write(at("device/letter.txt"), "mine");
    EXPECT_THAT(refusal(), HasSubstr("is not a device"));
    EXPECT_EQ(treeOf(at("device")).size(), 1U);
}

TEST_F(DeviceTest, PartsThatAreNoFoldersAreNamed)
{
    write(at("device"), "a file");
    EXPECT_THAT(refusal(), HasSubstr("is not a folder"));
    fs::remove(at("device"));
    write(at("device/object-store"), "a file");
    EXPECT_THAT(refusal(), HasSubstr("object-store\" must be a folder"));
    fs::remove(at("device/object-store"));
    fs::create_directory_symlink(at("."), at("device/object-store"));
    EXPECT_THAT(refusal(), HasSubstr("object-store\" must be a folder"));
    fs::remove(at("device/object-store"));
    fs::create_directory(at("device/object-store"));
    fs::remove(at("device/cards"));
    write(at("device/cards"), "a file");
    EXPECT_THAT(refusal(), HasSubstr("cards\" must be a folder"));
}

TEST_F(DeviceTest, DamagedDatabaseIsToldAndTheDeviceIsGivenBack)
{
    write(at("device/object-store/a.txt"), "a");
    write(at("device/device.db"), std::string(5000, '?'));
    EXPECT_THAT(refusal(), HasSubstr("device.db\" is damaged"));
    fs::remove(at("device/device.db"));
    EXPECT_TRUE(opened());
}

TEST_F(DeviceTest, FolderWithoutWritePermissionIsToldByTheSystemsReason)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "the superuser may write anywhere";
    fs::create_directories(at("device/object-store"));
    fs::permissions(at("device"), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_THAT(refusal(), HasSubstr("can't be written to: Permission denied"));
    fs::permissions(at("device"), fs::perms::owner_all);
}

TEST_F(DeviceTest, ExtraFoldersAppearForThisStartAndACardKeepsItsCapacity)
{
    write(at("documents/a.txt"), "a");
    write(at("stick/full.txt"), "1234567890");
    {
        const auto device = opened({{"Mine", at("documents"), false, {}}, {"Stick", at("stick"), true, 25}});
        ASSERT_TRUE(device);
        EXPECT_EQ(attributes(u"\\Mine"), FILE_ATTRIBUTE_DIRECTORY);
        EXPECT_EQ(attributes(u"\\Stick"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
        EXPECT_EQ(writeFile(u"\\Stick\\more.txt", 20), 15U);
    }
    ASSERT_TRUE(opened());
    EXPECT_FALSE(fs::exists(at("device/object-store/Mine")));
}

TEST_F(DeviceTest, ContentThatAFolderHidesIsTold)
{
    for (const char* folder : {"device/object-store/Held", "device/object-store/Empty", "host"})
        fs::create_directories(at(folder));
    std::ofstream(at("device/object-store/Held/file")) << "x";
    const auto warnings = [&](const char* name) {
        auto result = openDevice(at("device"), {{name, at("host"), true, {}}}, false);
        EXPECT_TRUE(result.device) << result.error.sentence;
        return result.warnings;
    };
    EXPECT_THAT(warnings("Held"), testing::ElementsAre(HasSubstr("object-store/Held\" is hidden")));
    EXPECT_THAT(warnings("Empty"), testing::IsEmpty());
    EXPECT_THAT(warnings("Other"), testing::IsEmpty());
}

TEST_F(DeviceTest, DatabaseThatWasLostIsToldAndOneThatNeverWasIsNot)
{
    const auto warnings = [&] {
        auto result = openDevice(at("device"), {}, false);
        EXPECT_TRUE(result.device) << result.error.sentence;
        return result.warnings;
    };
    // Made by hand, and refused at first.
    write(at("device/object-store/a.txt"), "");
    write(at("device/cards"), "");
    EXPECT_FALSE(openDevice(at("device"), {}, false).device);
    fs::remove(at("device/cards"));
    fs::remove(at("device/object-store/a.txt"));
    EXPECT_THAT(warnings(), testing::IsEmpty());
    EXPECT_THAT(warnings(), testing::IsEmpty());
    fs::remove(at("device/device.db"));
    EXPECT_THAT(warnings(), testing::ElementsAre(HasSubstr("device.db\" is missing")));
    EXPECT_THAT(warnings(), testing::IsEmpty());
    fs::resize_file(at("device/device.db"), 0);
    EXPECT_THAT(warnings(), testing::ElementsAre(HasSubstr("device.db\" is empty")));
}

TEST_F(DeviceTest, WhatAKilledChangeOfTheDatabaseHasLeftGoesAlsoBehindALink)
{
    ASSERT_TRUE(opened());
    fs::create_directories(at("elsewhere"));
    fs::rename(at("device/device.db"), at("elsewhere/real.db"));
    fs::create_symlink(at("elsewhere/real.db"), at("device/device.db"));
    write(at("device/device.db.changing"), "somebody else's");
    for (const char* part : {"", "-wal", "-shm", "-journal"})
        write(at(std::string("elsewhere/real.db.changing") + part), "left over");
    ASSERT_TRUE(opened());
    EXPECT_EQ(treeOf(at("elsewhere")).size(), 1U);
    EXPECT_TRUE(fs::exists(at("device/device.db.changing")));
}

TEST_F(DeviceTest, ExtraFoldersThatCannotBeShownAreRefusedWithTheirName)
{
    fs::create_directories(at("device/object-store"));
    fs::create_directories(at("device/cards/Card"));
    fs::create_directories(at("x"));
    write(at("file"), "");
    for (const char* name : {"", ".", "..", "a/b", "a\\b", "a*", "\xFF", "\xEF\x9C\xAF"})
        EXPECT_THAT(refusal({{name, at("x"), false, {}}}), HasSubstr("can't be the name")) << name;
    EXPECT_THAT(refusal({{"X", at("missing"), true, {}}}), HasSubstr("missing\" for \"X\" can't be opened: No such"));
    EXPECT_THAT(refusal({{"X", at("file"), true, {}}}), HasSubstr("is not a folder"));
    EXPECT_THAT(refusal({{"Card", at("x"), true, {}}}), HasSubstr("two folders named \"Card\""));
    EXPECT_THAT(refusal({{"X", at("x"), true, {}}, {"Y", at("device/../x"), false, {}}}),
                HasSubstr("is on the device already, as \"\\X\""));
    EXPECT_THAT(refusal({{"X", at("device/object-store"), false, {}}}), HasSubstr("is on the device already"));
    EXPECT_TRUE(opened({{"X", at("x"), true, {}}}));
}

TEST_F(DeviceTest, CardOfAnotherDeviceIsRefusedAndAPlainFolderIsNot)
{
    fs::create_directories(at("stick"));
    const int other = ::open(at("stick").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    const std::string sentence = refusal({{"Stick", at("stick"), true, {}}}, true);
    EXPECT_THAT(sentence, HasSubstr("stick\" is in use by another Quillbox device"));
    EXPECT_TRUE(opened({{"Stick", at("stick"), false, {}}}));
    close(other);

    const auto device = opened({{"Stick", at("stick"), true, {}}});
    const int late = ::open(at("stick").c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_NE(flock(late, LOCK_EX | LOCK_NB), 0);
    close(late);
}

TEST_F(DeviceTest, RememberedCardsComeBackAndMissingOnesAreEmptySlots)
{
    using namespace platform::device;
    fs::create_directories(at("stick"));
    fs::create_directories(at("other stick"));
    {
        const auto device = opened();
        ASSERT_TRUE(rememberFolder({"Stick", at("stick"), true, 100}));
        ASSERT_TRUE(rememberFolder({"Away", at("missing"), true, {}}));
        ASSERT_TRUE(rememberFolder({"Gone", at("other stick"), false, {}}));
        EXPECT_FALSE(rememberFolder({"a/b", at("stick"), true, {}}));
        EXPECT_TRUE(forgetFolder("Gone"));
        EXPECT_FALSE(forgetFolder("Gone"));
    }
    {
        const auto device = opened();
        ASSERT_TRUE(device);
        EXPECT_EQ(attributes(u"\\Stick"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY);
        EXPECT_EQ(writeFile(u"\\Stick\\a", 200), 100U);
        EXPECT_EQ(attributes(u"\\Away"), INVALID_FILE_ATTRIBUTES);
    }
    const auto device = opened({{"Stick", at("other stick"), false, {}}});
    ASSERT_TRUE(device);
    EXPECT_EQ(attributes(u"\\Stick"), FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace
