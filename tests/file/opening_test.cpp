// opening_test.cpp - what the calls with a path do to each kind of entry, and their errors. No path leads out of the
// device. Only files and folders are visible in the device.
#include "file_fixture.h"

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

class EntryTest : public FileTest {
protected:
    // Makes one entry of each kind, in the device and outside of it.
    void prepare() const
    {
        fs::remove_all(root());
        fs::create_directories(root() / "folder" / "empty");
        for (const char* name : {"../secret", "file", "readonly", "rom", "module"})
            hostWrite(root() / name, "bytes");
        ::chmod((root() / "readonly").c_str(), 0444);
        hostMark(root() / "rom", "0x40");
        hostMark(root() / "module", "0x2040");
        fs::create_symlink(outside() / "secret", root() / "absolute");
        fs::create_symlink("../secret", root() / "relative");
        fs::create_symlink("nowhere", root() / "dangling");
        fs::create_directory_symlink(outside(), root() / "out");
        ASSERT_EQ(::mkfifo((root() / "fifo").c_str(), 0666), 0);
        remount();
        addFolder(u"Card", true);
    }

    // Opens and closes the path. Returns the last error, which an open that succeeds can set, too.
    static DWORD opened(const WCHAR* path, DWORD access, DWORD creation)
    {
        SetLastError(0);
        const HANDLE file = open(path, access, creation);
        const DWORD error = GetLastError();
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, error == 0 || error == ERROR_ALREADY_EXISTS);
        CloseHandle(file);
        return error;
    }

    static constexpr DWORD (*Calls[])(const WCHAR*) = {
        [](const WCHAR* path) { return opened(path, GENERIC_READ, OPEN_EXISTING); },
        [](const WCHAR* path) { return opened(path, GENERIC_WRITE, OPEN_EXISTING); },
        [](const WCHAR* path) { return opened(path, GENERIC_WRITE, CREATE_NEW); },
        [](const WCHAR* path) { return opened(path, GENERIC_READ, CREATE_ALWAYS); },
        [](const WCHAR* path) { return opened(path, GENERIC_WRITE, OPEN_ALWAYS); },
        [](const WCHAR* path) { return opened(path, GENERIC_WRITE, TRUNCATE_EXISTING); },
        [](const WCHAR* path) { return errorOf(DeleteFileW(path)); },
        [](const WCHAR* path) { return errorOf(CreateDirectoryW(path, nullptr)); },
        [](const WCHAR* path) { return errorOf(RemoveDirectoryW(path)); },
        [](const WCHAR* path) { return errorOf(GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES); }};
};

TEST_F(EntryTest, EachCallDoesItsWorkOrFailsWithItsErrorAndChangesNothing)
{
    constexpr DWORD NoFile = ERROR_FILE_NOT_FOUND, NoPath = ERROR_PATH_NOT_FOUND, Denied = ERROR_ACCESS_DENIED,
                    Exists = ERROR_FILE_EXISTS, Already = ERROR_ALREADY_EXISTS, NotEmpty = ERROR_DIR_NOT_EMPTY;
    struct Row {
        std::vector<std::u16string> paths;
        DWORD errors[10];  // one for each of Calls
    };
    const Row rows[] = {
        {{u"\\file", u"file"}, {0, 0, Exists, Already, Already, 0, 0, Already, NoPath, 0}},
        {{u"\\none"}, {NoFile, NoFile, 0, 0, 0, NoFile, NoFile, 0, NoFile, NoFile}},
        {{u"\\none\\f", u"\\file\\f", u"\\out\\secret", u"\\out\\new"},
         {NoPath, NoPath, NoPath, NoPath, NoPath, NoPath, NoPath, NoPath, NoPath, NoPath}},
        {{u"\\folder"}, {Denied, Denied, Exists, Denied, Denied, Denied, Denied, Already, NotEmpty, 0}},
        {{u"\\folder\\empty"}, {Denied, Denied, Exists, Denied, Denied, Denied, Denied, Already, 0, 0}},
        {{u"\\Card", u"\\"}, {Denied, Denied, Exists, Denied, Denied, Denied, Denied, Already, Denied, 0}},
        {{u"\\readonly", u"\\rom"}, {0, Denied, Exists, Denied, Denied, Denied, Denied, Already, NoPath, 0}},
        {{u"\\module"}, {Denied, Denied, Exists, Denied, Denied, Denied, Denied, Already, NoPath, 0}},
        {{u"\\absolute", u"\\relative", u"\\dangling", u"\\out", u"\\fifo"},
         {NoFile, NoFile, Denied, Denied, Denied, NoFile, NoFile, Denied, NoFile, NoFile}},
    };
    prepare();
    for (const auto& [paths, errors] : rows) {
        for (int number = 0; number < 10; ++number) {
            for (const std::u16string& path : paths) {
                SCOPED_TRACE(testing::PrintToString(path) + " " + std::to_string(number));
                const auto before = treeOf(outside());
                EXPECT_EQ(Calls[number](path.c_str()), errors[number]);
                const bool changes = number == 3 ? errors[3] == 0 || errors[3] == Already
                                                 : number >= 2 && number <= 8 && errors[number] == 0;
                EXPECT_EQ(treeOf(outside()) != before, changes);
                if (changes)
                    prepare();
            }
        }
    }
}

// U+F700 to U+F7FF represent bytes that can't be shown. If that applied to every byte, U+F72F would be a slash.
TEST_F(EntryTest, CraftedNamesAreInvalidInEachCall)
{
    prepare();
    const auto before = treeOf(outside());
    for (const WCHAR* path : {u"\\..\\secret", u"..\\secret", u"\\a\\..\\..\\secret", u"\\../secret", u"\\.",
                              u"\\\\secret", u"\\\xF72Fsecret", u"\\..\xF72Fsecret", u"\\\xF72E\xF72E\\secret", u"",
                              u"\\a*", u"\\a?", u"\\a|b", u"\\<>", u"\\\"", u"\\\xD800"}) {
        for (const auto call : Calls)
            EXPECT_EQ(call(path), ERROR_INVALID_NAME) << testing::PrintToString(std::u16string(path));
    }
    EXPECT_EQ(treeOf(outside()), before);
    EXPECT_EQ(openError(std::u16string(260, u'a'), GENERIC_WRITE, CREATE_ALWAYS), ERROR_FILENAME_EXCED_RANGE);
    for (const DWORD creation : {0U, 6U})
        EXPECT_EQ(openError(u"\\file", GENERIC_WRITE, creation), ERROR_INVALID_PARAMETER);
}

TEST_F(FileTest, ReplacedFileKeepsItsOtherNamesOnTheHost)
{
    hostWrite(root() / "f", "old bytes");
    fs::create_hard_link(root() / "f", root() / "other name");
    make(u"\\f", "new");
    EXPECT_EQ(hostRead(root() / "other name"), "new");
}

TEST_F(FileTest, FilesGoToTheFolderAtTheirPathAlsoIfAnotherProcessMovesOrReplacesIt)
{
    const fs::path folder = root() / "a/b/c";
    const std::u16string path = u"\\a\\b\\c\\";
    fs::create_directories(folder);
    make(path + u"first", "");
    fs::rename(root() / "a", root() / "moved");
    // For a moment, files are still made in the folder that was moved.
    for (int number = 0;; number++) {
        const std::string name = std::to_string(number);
        if (const DWORD error = openError(path + std::u16string(name.begin(), name.end()), GENERIC_WRITE, CREATE_NEW)) {
            EXPECT_EQ(error, DWORD{ERROR_PATH_NOT_FOUND});
            break;
        }
        ASSERT_TRUE(number < 100'000 && fs::exists(root() / "moved/b/c" / name));
    }
    fs::create_directories(folder);
    make(path + u"second", "after it was moved");
    EXPECT_EQ(hostRead(folder / "second"), "after it was moved");

    fs::remove_all(root() / "a/b");
    EXPECT_EQ(openError(path + u"third", GENERIC_WRITE, CREATE_NEW), DWORD{ERROR_PATH_NOT_FOUND});
    fs::create_directories(folder);
    make(path + u"third", "after it was replaced");
    EXPECT_EQ(hostRead(folder / "third"), "after it was replaced");
}

TEST_F(FileTest, CallsOnAHandleOfTheWrongKindFail)
{
    hostWrite(root() / "f", "x");
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(u"\\*", &found);
    const HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    DWORD count = 77;
    char byte = 0;
    const auto expectError = [](BOOL result, DWORD error) { EXPECT_EQ(errorOf(result), error); };
    expectError(CloseHandle(search), ERROR_INVALID_HANDLE);
    expectError(FindClose(file), ERROR_INVALID_HANDLE);
    expectError(FindNextFileW(file, &found), ERROR_INVALID_HANDLE);
    expectError(ReadFile(search, &byte, 1, &count, nullptr), ERROR_INVALID_HANDLE);
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(FindClose(search));
    // The handle is open for reading only.
    expectError(WriteFile(file, &byte, 1, &count, nullptr), ERROR_ACCESS_DENIED);
    expectError(FlushFileBuffers(file), ERROR_ACCESS_DENIED);
    expectError(HandOverFileBuffers(file), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(file));
}

TEST_F(FileTest, MountWithAnInvalidOrTakenNameOrWithoutAFolderIsRefused)
{
    const auto folder = [&] { return ::open(root().c_str(), O_RDONLY | O_DIRECTORY); };
    addFolder(u"Card", true);
    for (const WCHAR* name : {u"", u"Card", u"a\\b", u".."})
        EXPECT_FALSE(platform::file::addMount({name, folder(), false, std::nullopt}));
    EXPECT_FALSE(platform::file::addMount({u"Closed", -1, false, std::nullopt}));
}

}  // namespace
