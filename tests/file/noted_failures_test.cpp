// noted_failures_test.cpp - each failure of the host changes the result of a call, or is recorded for the report at the
// end.
#include "file_fixture.h"

#include <cerrno>

using namespace platform::file;

namespace {

using Noted = std::set<std::u16string>;

class NotedFailuresTest : public FileTest {
protected:
    NotedFailuresTest() : FileTest(memoryFolder()) { (void)takeNoted(); }
    ~NotedFailuresTest() override { clearFaultPlan(); }

    // Makes each kind of call. Returns, as a text, all that these calls show of the host.
    [[nodiscard]] std::string everything() const
    {
        std::string seen;
        const auto add = [&](auto value) { seen += std::to_string(value) + ' '; };
        for (const std::u16string& name : list(u"\\d\\*"))
            seen += std::filesystem::path(name).string() + ' ';
        add(GetFileAttributesW(u"\\d\\b"));
        add(openError(u"\\d\\none", GENERIC_READ, OPEN_EXISTING));
        const HANDLE reader = open(u"\\d\\a", GENERIC_READ, OPEN_EXISTING);
        BY_HANDLE_FILE_INFORMATION information = {};
        (void)GetFileInformationByHandle(reader, &information);
        add(information.nFileSizeLow);
        add(SetFilePointer(reader, 1000, nullptr, FILE_BEGIN));
        add(std::hash<std::string>()(read(reader, 50'000)));
        CloseHandle(reader);

        const auto made = root() / "d" / "made";
        EXPECT_TRUE(!CreateDirectoryW(u"\\d\\made", nullptr) || std::filesystem::exists(made));
        for (const DWORD creation : {CREATE_NEW, CREATE_ALWAYS}) {
            const HANDLE writer = open(u"\\d\\made\\f", GENERIC_WRITE, creation);
            for (int i = 0; i < 200; ++i)
                (void)write(writer, std::string(300, 'w'));
            SetFilePointer(writer, 100, nullptr, FILE_BEGIN);
            SetEndOfFile(writer);
            (void)write(writer, "end");
            FlushFileBuffers(writer);
            CloseHandle(writer);
        }
        seen += hostRead(made / "f");
        EXPECT_TRUE(!DeleteFileW(u"\\d\\made\\f") || !std::filesystem::exists(made / "f"));
        add(std::filesystem::exists(made / "f") ? 1 : 0);
        FlushChangedVolumes();
        return seen;
    }

    void prepare() const
    {
        std::filesystem::remove_all(root() / "d");
        hostWrite(root() / "d" / "a", patternBytes(60'000));
        hostWrite(root() / "d" / "b", "b");
    }
};

// The errors that mean that something doesn't exist or already exists are left out.
TEST_F(NotedFailuresTest, EachFailureOfTheHostChangesAResultOrIsNoted)
{
    prepare();
    std::string whole;
    const std::uint64_t calls = hostCallsOf([&] { whole = everything(); });
    EXPECT_EQ(takeNoted(), Noted());
    for (const int error : {EACCES, EAGAIN, EBADF,  EBUSY,      EDQUOT,       EFAULT, EFBIG,  EINVAL, EIO,
                            EISDIR, EMFILE, EMLINK, ENFILE,     ENAMETOOLONG, ENODEV, ENOMEM, ENOSPC, ENOSYS,
                            ENXIO,  EPERM,  EROFS,  EOPNOTSUPP, EOVERFLOW,    ESTALE, ETXTBSY}) {
        for (std::uint64_t nth = 1; nth <= calls; ++nth) {
            prepare();
            std::string seen;
            hostCallsOf([&] { seen = everything(); }, {.kind = FaultKind::Fail, .nthCall = nth, .error = error});
            const bool noted = !takeNoted().empty();
            EXPECT_TRUE(noted || seen == whole) << "error " << error << " of call " << nth;
        }
    }
}

// Space on the disk is reserved for gathered bytes. So a full disk can't refuse them, but a failing disk can.
TEST_F(NotedFailuresTest, GatheredBytesThatTheDiskRefusesAreNoLongerInTheFile)
{
    const auto card = addFolder(u"Card", true, 200'000);
    const std::pair<const char*, std::function<BOOL(HANDLE)>> calls[] = {
        {"HandOver", [](HANDLE file) { return HandOverFileBuffers(file); }},
        {"Flush", [](HANDLE file) { return FlushFileBuffers(file); }},
        {"Seek", [](HANDLE file) { return SetFilePointer(file, 5, nullptr, FILE_BEGIN) == 5 ? TRUE : FALSE; }},
        {"Write", [](HANDLE file) { return write(file, std::string(50'000, 'l')) != 0 ? TRUE : FALSE; }},
        {"FlushAll", [](HANDLE) { return FlushChangedVolumes(); }},
        {"Close", [](HANDLE file) { return CloseHandle(file); }},
    };
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        const HANDLE file = open(u"\\Card\\f", GENERIC_WRITE, CREATE_ALWAYS);
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(write(file, std::string(300, 's')), 300U);
        const auto onHost = std::filesystem::file_size(card / "f");
        ASSERT_LT(onHost, 60'000U) << "this file system has no gathered bytes";
        setFaultPlan({.kind = FaultKind::Fail, .nthCall = 1, .error = EIO});
        EXPECT_EQ(errorOf(call(file)), ERROR_GEN_FAILURE);
        clearFaultPlan();
        if (std::string(name) != "Close") {
            EXPECT_EQ(write(file, "more"), 0U) << "the bytes before them are missing";
            EXPECT_FALSE(HandOverFileBuffers(file));
            EXPECT_FALSE(CloseHandle(file));
        }
        EXPECT_TRUE(takeNoted().contains(u"write \\Card\\f"));
        EXPECT_EQ(std::filesystem::file_size(card / "f"), onHost);
        EXPECT_EQ(usedBytes(u"Card"), onHost);
    }
}

TEST_F(NotedFailuresTest, FileInUseIsNotedOnlyIfAnotherProcessUsesIt)
{
    prepare();
    const HANDLE held = open(u"\\d\\b", GENERIC_WRITE, OPEN_EXISTING);
    EXPECT_EQ(openError(u"\\d\\b", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(DeleteFileW(u"\\d\\b"));
    CloseHandle(held);
    EXPECT_EQ(takeNoted(), Noted());
    const OtherProcess elsewhere(root() / "d" / "b", O_WRONLY);
    EXPECT_EQ(openError(u"\\d\\b", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(takeNoted(), Noted{u"read \\d\\b"});
}

}  // namespace
