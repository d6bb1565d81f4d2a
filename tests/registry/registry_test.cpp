#include "database/device_database.h"
#include "registry_fixture.h"

#include "ce/handle.h"

namespace {

class RegistryTest : public RegistryFixture {
protected:
    RegistryTest() { EXPECT_EQ(open(), ""); }
};

TEST_F(RegistryTest, NamesAreFoundWithoutCaseWithinTheirRootOnly)
{
    DWORD disposition = 0;
    HKEY first = nullptr;
    HKEY second = nullptr;
    ASSERT_EQ(make(HKEY_LOCAL_MACHINE, u"Ärger\\Один", first, &disposition), 0);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    ASSERT_EQ(make(made(HKEY_LOCAL_MACHINE, u"äRGER"), u"оДИН", second, &disposition), 0);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    ASSERT_EQ(set(first, u"Größe", "one"), 0);
    ASSERT_EQ(set(second, u"GRÖßE", "two", REG_SZ), 0);
    ASSERT_EQ(set(first, nullptr, "by default"), 0);
    ASSERT_EQ(set(HKEY_LOCAL_MACHINE, u"on top", ""), 0);
    ASSERT_EQ(reopened(), "");
    const HKEY found = made(HKEY_LOCAL_MACHINE, u"ÄRGER\\один");
    EXPECT_EQ(get(found, u"größe"), "two");
    EXPECT_EQ(get(found, u""), "by default");
    EXPECT_EQ(get(HKEY_LOCAL_MACHINE, u"on top"), "");
    DWORD type = 0;
    EXPECT_EQ(RegQueryValueExW(found, u"Größe", nullptr, &type, nullptr, nullptr), 0);
    EXPECT_EQ(type, REG_SZ);

    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_USERS})
        EXPECT_EQ(get(made(root, u"Ärger\\Один"), u"Größe"), "none");
}

TEST_F(RegistryTest, SmallBufferAndMissingValueLeaveTheBufferAlone)
{
    const HKEY key = made(HKEY_CURRENT_USER, u"k");
    ASSERT_EQ(set(key, u"v", "12345"), 0);
    BYTE data[6] = {'#', '#', '#', '#', '#', '#'};
    DWORD size = 4;
    EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, data, &size), LONG{ERROR_MORE_DATA});
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(data[0], '#');
    DWORD type = 77;
    size = 6;
    EXPECT_EQ(RegQueryValueExW(key, u"w", nullptr, &type, data, &size), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(size, 6U);
    EXPECT_EQ(type, 77U);
    EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, data, &size), 0);
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(data[5], '#');
}

TEST_F(RegistryTest, RefusedPathMakesNoKeysAndPathsWithinTheLimitsAreMade)
{
    const LONG refused{ERROR_INVALID_PARAMETER};
    HKEY key = nullptr;
    const std::u16string longest(255, u'n');
    EXPECT_EQ(make(HKEY_USERS, longest, key), 0);
    std::u16string deepest = u"1";
    for (int level = 2; level <= 16; ++level)
        deepest += u"\\x";
    EXPECT_EQ(make(HKEY_USERS, deepest, key), 0);
    EXPECT_EQ(make(key, u"y", key), refused);
    for (const std::u16string& path :
         {std::u16string(), std::u16string(u"\\a"), std::u16string(u"a\\"), std::u16string(u"a\\\\b"),
          u"a\\" + longest + u"n", deepest + u"\\y", std::u16string(u"a\xD800")})
        EXPECT_EQ(make(HKEY_CLASSES_ROOT, path, key), refused) << testing::PrintToString(path);
    EXPECT_EQ(set(HKEY_USERS, (longest + u"n").c_str(), "x"), refused);
    EXPECT_EQ(set(HKEY_USERS, u"\xDC00", "x"), refused);
    DWORD disposition = 0;
    ASSERT_EQ(make(HKEY_CLASSES_ROOT, u"a", key, &disposition), 0);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
}

TEST_F(RegistryTest, ClosedKeysAndOtherHandlesAreRefused)
{
    const LONG refused{ERROR_INVALID_HANDLE};
    HKEY result = nullptr;
    const HKEY closed = made(HKEY_USERS, u"a");
    EXPECT_FALSE(CloseHandle(closed));
    EXPECT_EQ(RegCloseKey(closed), 0);
    const HKEY older = made(HKEY_USERS, u"a");
    ASSERT_EQ(reopened(), "");
    for (const HKEY key : {closed, older, HKEY{nullptr}, reinterpret_cast<HKEY>(INVALID_HANDLE_VALUE)}) {
        EXPECT_EQ(set(key, u"v", "x"), refused);
        EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, nullptr, nullptr), refused);
        EXPECT_EQ(make(key, u"b", result), refused);
        EXPECT_EQ(RegCloseKey(key), refused);
    }
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
    EXPECT_EQ(set(HKEY_CURRENT_USER, u"still", "open"), 0);
}

TEST_F(RegistryTest, FullDiskIsAnErrorAndKeepsTheOldValue)
{
    const HKEY key = made(HKEY_CURRENT_USER, u"k");
    ASSERT_EQ(set(key, u"v", "old"), 0);
    ASSERT_EQ(platform::database::DatabaseUse()->execute("PRAGMA max_page_count = 1"), platform::database::Step::Done);
    EXPECT_EQ(set(key, u"v", std::string(100'000, 'n')), LONG{ERROR_DISK_FULL});
    EXPECT_EQ(get(key, u"v"), "old");
}

TEST_F(RegistryTest, EveryCallFailsWithoutADatabase)
{
    platform::registry::closeRegistry();
    HKEY key = nullptr;
    EXPECT_EQ(make(HKEY_USERS, u"a", key), LONG{ERROR_GEN_FAILURE});
    EXPECT_EQ(set(HKEY_USERS, u"a", "x"), LONG{ERROR_GEN_FAILURE});
    EXPECT_EQ(RegQueryValueExW(HKEY_USERS, u"a", nullptr, nullptr, nullptr, nullptr), LONG{ERROR_GEN_FAILURE});
}

}  // namespace
