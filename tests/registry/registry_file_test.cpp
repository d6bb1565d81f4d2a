#include "file/host_faults.h"
#include "file/name_space.h"
#include "kernel/troubles.h"
#include "killed_process.h"
#include "registry_fixture.h"
#include "written_bytes.h"

#include "ce/file.h"
#include "ce/registry_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <tuple>

namespace {

namespace fs = std::filesystem;

const std::u16string EmptyRegistry = RegistryTextHead + u"\r\n[HKEY_CLASSES_ROOT]\r\n\r\n[HKEY_CURRENT_USER]\r\n\r\n"
                                                        u"[HKEY_LOCAL_MACHINE]\r\n\r\n[HKEY_USERS]\r\n"
                                                        u"\r\n; End of registry: 4 keys, 0 values\r\n";

class RegistryFileTest : public RegistryFixture {
protected:
    RegistryFileTest()
    {
        fs::create_directory(store());
        mount();
        EXPECT_EQ(open(), "");
    }
    ~RegistryFileTest() override { platform::file::removeAllMounts(); }

    [[nodiscard]] fs::path store() const { return at("object-store"); }
    void mount(std::optional<std::uint64_t> capacity = {}) const
    {
        platform::file::removeAllMounts();
        ASSERT_TRUE(platform::file::addMount(
            {u"", ::open(store().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), false, capacity}));
    }
    // Adds one value, and the key that contains it.
    static void add(const std::u16string& path, const WCHAR* name, DWORD type, const std::string& data,
                    HKEY root = HKEY_CURRENT_USER)
    {
        ASSERT_EQ(set(path.empty() ? root : made(root, path), name, data, type), 0);
    }
    // Returns the registry file of the whole registry.
    [[nodiscard]] std::string copied() const
    {
        EXPECT_TRUE(RegCopyFile(u"\\copy.reg")) << GetLastError();
        return hostRead(store() / "copy.reg");
    }
    // Makes a staged file of these bytes, and opens the registry again. Returns whether the registry took the file
    // over.
    [[nodiscard]] bool takenOver(const std::string& bytes) const
    {
        platform::registry::closeRegistry();
        fs::remove(at("registry.refused"));
        hostWrite(at("registry.staged"), bytes);
        const std::string warning = open();
        EXPECT_FALSE(fs::exists(at("registry.staged")));
        const bool refused = fs::exists(at("registry.refused"));
        EXPECT_EQ(warning.find("registry.refused") != std::string::npos, refused) << warning;
        EXPECT_TRUE(!refused || hostRead(at("registry.refused")) == bytes);
        return !refused;
    }
    static void fillWithEverything()
    {
        add(u"", nullptr, REG_SZ, utf16(std::u16string(u"by \"default\" \\ plain\0", 21)), HKEY_CLASSES_ROOT);
        add(u"", u"z", REG_DWORD, std::string("\x1F\0\0\x80", 4), HKEY_CLASSES_ROOT);
        add(u"a]b\\c[d\r\ne\\ä 😀", u"q\"uo\\te\r\nend=", REG_SZ, utf16(std::u16string(u"x\r\ny\0", 5)));
        add(u"a]b\\\x01\x02\\\x03", u"@", REG_SZ, utf16(u"no NUL"));
        add(u"Types", u"1 odd", REG_SZ, "abc");
        add(u"Types", u"2 empty", REG_SZ, "");
        add(u"Types", u"3 half", REG_SZ, utf16(std::u16string(u"\xD800\0", 2)));
        add(u"Types", u"4 expand", REG_EXPAND_SZ, utf16(std::u16string(u"%A%\0", 4)));
        add(u"Types", u"5 multi", REG_MULTI_SZ, utf16(std::u16string(u"a\0b\0\0", 5)));
        add(u"Types", u"6 none", REG_NONE, "");
        add(u"Types", u"7 short number", REG_DWORD, "\x01");
        add(u"Types", u"8 unknown", 0xFFFFFFFE, "\x01\x02");
        add(u"Types", u"9 bytes", REG_BINARY, std::string(3000, '\xA5'));
        add(std::u16string(255, u'k'), std::u16string(255, u'v').c_str(), REG_BINARY, "x", HKEY_USERS);
        add(u"1\\2\\3\\4\\5\\6\\7\\8\\9\\10\\11\\12\\13\\14\\15\\16", u"deep", REG_BINARY, "", HKEY_LOCAL_MACHINE);
    }
};

TEST_F(RegistryFileTest, TextHasTheBytesOfTheFormatInAFixedOrder)
{
    EXPECT_EQ(copied(), utf16(EmptyRegistry));
    add(u"b", u"Zwei", REG_BINARY, "\x01\xAB");
    add(u"b", u"eins", REG_SZ, utf16(std::u16string(u"say \"a\\b\"\0", 10)));
    add(u"b", nullptr, REG_DWORD, std::string("\x1F\0\0\0", 4));
    add(u"A\\]\r", u"m", REG_MULTI_SZ, utf16(std::u16string(u"a\0\0", 3)));
    add(u"", u"l", REG_BINARY, std::string(26, '\x11'), HKEY_USERS);
    EXPECT_EQ(copied(), utf16(RegistryTextHead +
                              u"\r\n[HKEY_CLASSES_ROOT]\r\n\r\n[HKEY_CURRENT_USER]\r\n"
                              u"\r\n[HKEY_CURRENT_USER\\A]\r\n"
                              u"\r\n[HKEY_CURRENT_USER\\A\\]\\\\000d]\r\n\"m\"=hex(7):61,00,00,00,00,00\r\n"
                              u"\r\n[HKEY_CURRENT_USER\\b]\r\n@=dword:0000001f\r\n"
                              u"\"eins\"=\"say \\\"a\\\\b\\\"\"\r\n\"Zwei\"=hex:01,ab\r\n"
                              u"\r\n[HKEY_LOCAL_MACHINE]\r\n\r\n[HKEY_USERS]\r\n"
                              u"\"l\"=hex:11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,"
                              u"\\\r\n  11,11,11\r\n"
                              u"\r\n; End of registry: 7 keys, 5 values\r\n"));
}

TEST_F(RegistryFileTest, EveryTypeAndEveryNameComesBackAtTheNextStartAndNotBefore)
{
    fillWithEverything();
    const std::string before = copied();
    ASSERT_TRUE(RegCopyFile(u"\\saved.reg"));
    ASSERT_TRUE(RegRestoreFile(u"\\saved.reg"));
    EXPECT_EQ(GetFileAttributesW(u"\\saved.reg"), INVALID_FILE_ATTRIBUTES);
    add(u"Types", u"9 bytes", REG_SZ, "changed");
    add(u"Later", u"added", REG_SZ, "");
    EXPECT_NE(copied(), before);
    ASSERT_EQ(reopened(), "");
    EXPECT_EQ(copied(), before);
    add(u"Later", u"added", REG_SZ, "");
    const std::string changed = copied();
    ASSERT_EQ(reopened(), "");
    EXPECT_EQ(copied(), changed) << "a restored registry was applied twice";
    // If a value were lost in both copies, they would still be equal. So this value is read.
    EXPECT_EQ(get(made(HKEY_CURRENT_USER, u"a]b\\c[d\r\ne\\Ä 😀"), u"q\"uo\\te\r\nend="),
              utf16(std::u16string(u"x\r\ny\0", 5)));
}

TEST_F(RegistryFileTest, FileCutAnywhereIsRefusedAndKeptUnderAnotherName)
{
    add(u"a\\b", u"n", REG_SZ, utf16(std::u16string(u"text\0", 5)));
    add(u"a\\b", u"h", REG_BINARY, "\x01\x02");
    const std::string whole = copied();
    add(u"stays", u"old", REG_BINARY, "old");
    const std::string old = copied();
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(takenOver(whole.substr(0, size))) << size;
    EXPECT_EQ(copied(), old);
    EXPECT_TRUE(takenOver(whole));
    EXPECT_EQ(copied(), whole);
}

const std::u16string Key = u"[HKEY_USERS\\k]\r\n";
TEST_F(RegistryFileTest, DamagedTextLeavesTheRegistryAsItWas)
{
    add(u"stays", u"old", REG_BINARY, "old");
    const std::string old = copied();
    // The name of each damage, and the text after the head of a file whose head names 1 key and 1 value.
    const std::pair<const char*, std::u16string> damages[] = {
        {"Unknown root", u"[HKEY_OTHER\\k]\r\n@=\"\""},
        {"No key", u"@=\"\""},
        {"Key not closed", u"[HKEY_USERS\\k\r\n@=\"\""},
        {"Empty level", u"[HKEY_USERS\\k\\]\r\n@=\"\""},
        {"Level of 256", u"[HKEY_USERS\\" + std::u16string(256, u'k') + u"]\r\n@=\"\""},
        {"Seventeen levels", u"[HKEY_USERS\\1\\2\\3\\4\\5\\6\\7\\8\\9\\a\\b\\c\\d\\e\\f\\g\\h]\r\n@=\"\""},
        {"Endless key", u"[" + std::u16string(100'000, u'[')},
        {"Half character", u"[HKEY_USERS\\\xDC00]\r\n@=\"\""},
        {"Escaped NUL", u"[HKEY_USERS\\a\\\\0000]\r\n@=\"\""},
        {"Escaped backslash", u"[HKEY_USERS\\a\\\\005c]\r\n@=\"\""},
        {"Deleted key", u"[-HKEY_USERS\\k]\r\n@=\"\""},
        {"Deleted value", Key + u"@=-"},
        {"Name of 256", Key + u'"' + std::u16string(256, u'v') + u"\"=\"\""},
        {"NUL in text", Key + u"@=\"" + std::u16string(1, u'\0') + u"\""},
        {"Text not closed", Key + u"@=\"a"},
        {"Bad escape", Key + u"@=\"\\n\""},
        {"Number of nine digits", Key + u"@=dword:123456789"},
        {"No digits", Key + u"@=dword:"},
        {"Type of nine digits", Key + u"@=hex(123456789):00"},
        {"One digit", Key + u"@=hex:1"},
        {"Comma at the end", Key + u"@=hex:11,"},
        {"Unknown form", Key + u"@=qword:1"},
        {"Two values in a line", Key + u"@=\"\" \"a\"=\"\""},
        {"One value missing", Key},
        {"One too many", Key + u"@=\"\"\r\n\"a\"=\"\""},
        {"Value after the end", Key + u"@=\"\"\r\n; End of registry: 1 keys, 1 values\r\n\"a\"=\"\""},
        {"Value of more than 16 MiB", Key + u"@=\"" + std::u16string(8 * 1024 * 1024, u'x') + u"\""},
    };
    for (const auto& [name, body] : damages) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(takenOver(utf16(RegistryTextHead + body + u"\r\n; End of registry: 1 keys, 1 values\r\n")));
        EXPECT_EQ(copied(), old);
    }
}

TEST_F(RegistryFileTest, VariantsOfTheFormatAreRead)
{
    ASSERT_TRUE(takenOver(utf16(RegistryTextHead +
                                u"; a comment\n[hkey_users\\K]  \n  \"a\" = hex(0000000b):01, \\\n \t02\r\n@=hex:\r\n"
                                u"\"n\"=dword:F\n[HKEY_USERS\\k\\l]\n\n; End of registry: 2 keys, 3 values\n")));
    EXPECT_NE(copied().find(utf16(u"[HKEY_USERS\\K]\r\n@=hex:\r\n\"a\"=hex(b):01,02\r\n\"n\"=dword:0000000f\r\n\r\n"
                                  u"[HKEY_USERS\\K\\l]\r\n")),
              std::string::npos);
}

TEST_F(RegistryFileTest, FailedCallSetsItsErrorAndLeavesNoIncompleteFile)
{
    const auto expectError = [](DWORD error, BOOL result) { EXPECT_EQ(result ? 0 : GetLastError(), error); };
    expectError(ERROR_PATH_NOT_FOUND, RegCopyFile(u"\\none\\a.reg"));
    expectError(ERROR_FILE_NOT_FOUND, RegRestoreFile(u"\\a.reg"));
    ASSERT_TRUE(RegCopyFile(u"\\a.reg"));
    const HANDLE open = CreateFileW(u"\\a.reg", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    expectError(ERROR_SHARING_VIOLATION, RegRestoreFile(u"\\a.reg"));
    CloseHandle(open);
    EXPECT_FALSE(fs::exists(at("registry.staged")));
    mount(hostRead(store() / "a.reg").size() + 100);
    expectError(ERROR_DISK_FULL, RegCopyFile(u"\\b.reg"));
    platform::registry::closeRegistry();
    expectError(ERROR_GEN_FAILURE, RegCopyFile(u"\\b.reg"));
    expectError(ERROR_GEN_FAILURE, RegRestoreFile(u"\\a.reg"));
    EXPECT_FALSE(fs::exists(store() / "b.reg"));
    EXPECT_TRUE(fs::exists(store() / "a.reg"));
}

TEST_F(RegistryFileTest, FailedCallOfTheHostLeavesNoIncompleteFile)
{
    using namespace platform::file;
    const auto nthFails = [](std::uint64_t nth, const WCHAR* path, decltype(&RegCopyFile) call) {
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = nth, .error = EIO});
        const bool good = call(path);
        const bool failed = hostCallsMade() >= nth;
        clearFaultPlan();
        EXPECT_TRUE(good || failed);
        return std::pair(good, failed);
    };
    for (int number = 0; number < 35; ++number)  // so that the file layer gathers the last bytes of the file
        add(u"k", std::u16string(1, static_cast<WCHAR>(u'A' + number)).c_str(), REG_BINARY, std::string(350, 'x'));
    const std::string whole = copied();
    ASSERT_GT(whole.size(), 65536U);
    ASSERT_LT(whole.size(), 65536U + 8192U);
    for (auto [nth, failed] = std::pair(1U, true); failed; ++nth) {
        SCOPED_TRACE(nth);
        fs::remove(store() / "new.reg");
        bool good = false;
        std::tie(good, failed) = nthFails(nth, u"\\new.reg", RegCopyFile);
        EXPECT_TRUE(hostRead(store() / "new.reg") == (good ? whole : ""));
    }
}

TEST_F(RegistryFileTest, DamagedFileIsRefusedAtOnceAndDoesNotReplaceAGoodOne)
{
    add(u"k", u"good", REG_BINARY, "good");
    const std::string good = copied();
    add(u"k", u"later", REG_BINARY, "later");
    hostWrite(store() / "good.reg", good);
    hostWrite(store() / "cut.reg", good.substr(0, good.size() - 2));
    EXPECT_TRUE(RegRestoreFile(u"\\good.reg"));
    EXPECT_FALSE(RegRestoreFile(u"\\cut.reg"));
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    using namespace platform::kernel;
    EXPECT_EQ(troublesOf(Trouble::Writing, Troubled::Registry).size(), 1U);
    EXPECT_EQ(hostRead(at("registry.refused")), good.substr(0, good.size() - 2));
    EXPECT_TRUE(fs::exists(store() / "cut.reg"));
    EXPECT_EQ(reopened(), "");
    EXPECT_EQ(copied(), good);
}

TEST_F(RegistryFileTest, FileIsStagedInADeviceThatIsGivenByALink)
{
    EXPECT_NE(copied(), "");
    platform::registry::closeRegistry();
    fs::create_directory_symlink(file().parent_path(), at("link"));
    std::string sentence;
    ASSERT_TRUE(platform::registry::openRegistry(at("link") / "device.db", sentence)) << sentence;
    EXPECT_TRUE(RegRestoreFile(u"\\copy.reg")) << GetLastError();
    EXPECT_TRUE(fs::exists(at("registry.staged")));
}

TEST_F(RegistryFileTest, LinkInsteadOfTheStagedFileIsNotFollowed)
{
    add(u"stays", u"old", REG_BINARY, "old");
    const std::string old = copied();
    platform::registry::closeRegistry();
    hostWrite(at("elsewhere"), utf16(EmptyRegistry));
    fs::create_symlink(at("elsewhere"), at("registry.staged"));
    EXPECT_NE(open().find("was not put in force"), std::string::npos);
    EXPECT_EQ(copied(), old);
    EXPECT_TRUE(fs::is_symlink(at("registry.refused")));
}

TEST_F(RegistryFileTest, KillWhileAFileIsStagedOrAppliedLeavesTheOldOrTheNewRegistry)
{
    for (int key = 0; key < 20; ++key)
        add(u"new\\" + std::u16string(1, static_cast<WCHAR>(u'a' + key)), u"v", REG_BINARY, std::string(300, 'n'));
    const std::string newer = copied();
    ASSERT_TRUE(takenOver(utf16(EmptyRegistry)));
    add(u"old", u"v", REG_BINARY, "old");
    const std::string older = copied();
    platform::registry::closeRegistry();
    const std::string database = hostRead(file());
    const fs::path given = store() / "given.reg";
    const fs::path staged = at("registry.staged");
    for (const fs::path& source : {given, staged}) {
        std::set<std::string> found;
        bool killed = true;
        for (int calls = 0; killed; calls += source == given ? 1 : 3) {
            SCOPED_TRACE(testing::Message() << source << ' ' << calls);
            for (const char* part : {"device.db-wal", "registry.refused", "registry.growing"})
                fs::remove(at(part));
            hostWrite(file(), database);
            hostWrite(source, newer);
            killed = killedBeforeCall(calls, [&] {
                if (open().empty() && source == given)
                    (void)RegRestoreFile(u"\\given.reg");
            });
            const bool kept = fs::exists(given) && hostRead(given) == newer;
            // Reads the registry as it is before the staged file is applied.
            if (source == staged && fs::exists(staged)) {
                fs::rename(staged, at("aside"));
                ASSERT_EQ(open(), "");
                found.insert(copied());
                platform::registry::closeRegistry();
                fs::rename(at("aside"), staged);
            }
            ASSERT_EQ(open(), "");
            found.insert(copied());
            ASSERT_TRUE(copied() == newer || (source == given && copied() == older && kept));
            ASSERT_FALSE(fs::exists(at("registry.growing")) || fs::exists(staged));
            platform::registry::closeRegistry();
        }
        EXPECT_FALSE(fs::exists(given));
        EXPECT_EQ(found, (std::set{older, newer}));
    }
}

}  // namespace
