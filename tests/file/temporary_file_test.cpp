// temporary_file_test.cpp - files that the program declared as temporary, and the cache of attributes.
#include "file_fixture.h"

#include "attributes.h"
#include "known_attributes.h"
#include "temporary_content.h"

#include <cerrno>

namespace fs = std::filesystem;
using platform::file::HostStatus;
using platform::file::KnownAttributes;

namespace {

constexpr std::size_t InMemory = platform::file::TemporaryContent::MemoryBytes;

class TemporaryFileTest : public FileTest {
protected:
    TemporaryFileTest() { card_ = addFolder(u"Card", true, 4 * InMemory); }

    static std::uint64_t used() { return platform::file::usedBytes(u"Card").value_or(~0ULL); }

    fs::path card_;
};

TEST_F(TemporaryFileTest, TemporaryFileIsReadAndCountedLikeAnyFileButIsNotOnTheHost)
{
    ASSERT_TRUE(DeclareTemporaryFile(u"\\Card\\t"));
    for (const std::size_t size : {0UL, 3000UL, InMemory, InMemory + 1, 3 * InMemory}) {
        SCOPED_TRACE(size);
        const std::string bytes = patternBytes(size);
        const auto calls = hostCallsOf([&] {
            const HANDLE file = open(u"\\Card\\t", GENERIC_WRITE, CREATE_ALWAYS);
            for (std::size_t at = 0; at < size; at += 260)
                EXPECT_GT(write(file, bytes.substr(at, 260)), 0U);
            EXPECT_EQ(errorOf(DeleteFileW(u"\\Card\\t")), ERROR_SHARING_VIOLATION);
            EXPECT_EQ(openError(u"\\Card\\t", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
            EXPECT_TRUE(CloseHandle(file));
            EXPECT_EQ(readAll(u"\\Card\\t"), bytes);
            EXPECT_EQ(readAll(u"\\Card\\t", 100'000), bytes);
        });
        EXPECT_EQ(calls == 0, size <= InMemory);
        EXPECT_EQ(used(), size);
        EXPECT_TRUE(fs::is_empty(card_));
        EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
        EXPECT_EQ(used(), 0U);
        EXPECT_EQ(openError(u"\\Card\\t", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    }
    const HANDLE tooLong = open(u"\\Card\\t", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(write(tooLong, patternBytes(4 * InMemory + 1)), 4 * InMemory) << "the card's capacity";
    CloseHandle(tooLong);
}

TEST_F(TemporaryFileTest, TemporaryFileIsPutOnTheHostBeforeACallThatCouldNoticeItsAbsence)
{
    BY_HANDLE_FILE_INFORMATION information;
    const std::pair<const char*, std::function<void(HANDLE)>> calls[] = {
        {"flush", [](HANDLE file) { EXPECT_TRUE(FlushFileBuffers(file)); }},
        {"hand over", [](HANDLE file) { EXPECT_TRUE(HandOverFileBuffers(file)); }},
        {"end", [](HANDLE file) { EXPECT_TRUE(SetEndOfFile(file)); }},
        {"information", [&](HANDLE file) { EXPECT_TRUE(GetFileInformationByHandle(file, &information)); }},
        {"flush all", [](HANDLE) { EXPECT_TRUE(FlushChangedVolumes()); }},
        {"search", [](HANDLE) { EXPECT_TRUE(list(u"\\Card\\*").contains(u"t")); }},
        {"attributes", [](HANDLE) { EXPECT_NE(GetFileAttributesW(u"\\Card\\t"), INVALID_FILE_ATTRIBUTES); }},
        {"folder", [](HANDLE) { EXPECT_EQ(errorOf(CreateDirectoryW(u"\\Card\\t", nullptr)), ERROR_ALREADY_EXISTS); }},
        {"below",
         [](HANDLE) { EXPECT_EQ(openError(u"\\Card\\t\\a", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND); }},
        {"replace",
         [](HANDLE) { EXPECT_EQ(openError(u"\\Card\\t", GENERIC_WRITE, CREATE_ALWAYS), ERROR_SHARING_VIOLATION); }},
        {"withdraw", [](HANDLE) { EXPECT_TRUE(WithdrawTemporaryFile(u"\\Card\\t")); }},
    };
    for (const std::size_t size : {5000UL, 2 * InMemory}) {
        for (const auto& [name, call] : calls) {
            SCOPED_TRACE(name);
            ASSERT_TRUE(DeclareTemporaryFile(u"\\Card\\t"));
            const std::string bytes = patternBytes(size);
            const HANDLE file = open(u"\\Card\\t", GENERIC_WRITE, CREATE_ALWAYS);
            EXPECT_EQ(write(file, bytes), size);
            call(file);
            EXPECT_EQ(hostRead(card_ / "t"), bytes);
            EXPECT_EQ(write(file, "more"), 4U);
            EXPECT_EQ(errorOf(DeleteFileW(u"\\Card\\t")), ERROR_SHARING_VIOLATION);
            EXPECT_TRUE(CloseHandle(file));
            EXPECT_EQ(readAll(u"\\Card\\t"), bytes + "more");
            EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
            EXPECT_TRUE(fs::is_empty(card_));
            EXPECT_EQ(used(), 0U);
            EXPECT_EQ(hostCallsOf([] { make(u"\\Card\\t", "again"); }) == 0, std::string(name) != "withdraw");
            EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
        }
    }
}

TEST_F(TemporaryFileTest, LaterFileOfAnotherProgramAtTheTemporaryPathStaysAndAnEarlierOneIsReplaced)
{
    hostWrite(card_ / "t", "before");
    ASSERT_TRUE(DeclareTemporaryFile(u"\\Card\\t"));
    EXPECT_EQ(readAll(u"\\Card\\t"), "before");
    make(u"\\Card\\t", "ours");
    EXPECT_EQ(hostRead(card_ / "t"), "ours") << "as without a declaration";
    EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
    hostWrite(card_ / "t", "later");
    make(u"\\Card\\t", "ours");
    EXPECT_EQ(readAll(u"\\Card\\t"), "ours");
    EXPECT_EQ(list(u"\\Card\\*"), std::set<std::u16string>{u"t"});
    EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
    EXPECT_EQ(hostRead(card_ / "t"), "later");
}

TEST_F(TemporaryFileTest, FailedCallOfTheHostFailsOnlyTheWriteThatNeedsIt)
{
    ASSERT_TRUE(DeclareTemporaryFile(u"\\Card\\t"));
    const std::string bytes = patternBytes(InMemory);
    bool failed = true;
    for (std::uint64_t n = 1; failed; n++) {
        SCOPED_TRACE(n);
        const HANDLE file = open(u"\\Card\\t", GENERIC_WRITE, CREATE_ALWAYS);
        EXPECT_EQ(write(file, bytes), bytes.size());
        DWORD written = 0;
        const auto calls = hostCallsOf([&] { written = write(file, "over"); },
                                       {.kind = platform::file::FaultKind::Fail, .nthCall = n, .error = EIO});
        failed = calls >= n;
        EXPECT_TRUE(CloseHandle(file));
        EXPECT_EQ(readAll(u"\\Card\\t"), bytes + std::string("over").substr(0, written));
        EXPECT_TRUE(DeleteFileW(u"\\Card\\t"));
    }
    EXPECT_TRUE(fs::is_empty(card_));
}

TEST_F(TemporaryFileTest, NothingIsLeftWhereverTheProcessIsKilled)
{
    int status = -1;
    for (std::uint64_t n = 1; status != 0; n++) {
        status = statusOfChild([n] {
            platform::file::setFaultPlan({.kind = platform::file::FaultKind::Kill, .nthCall = n});
            (void)DeclareTemporaryFile(u"\\Card\\t");
            make(u"\\Card\\t", patternBytes(2 * InMemory));
            return true;
        });
        EXPECT_TRUE(fs::is_empty(card_)) << n;
    }
}

TEST_F(TemporaryFileTest, StartSetsAsideWhatAKilledProcessLeftAndSearchesOnlyAMarkedRoot)
{
    const auto isMarked = [](const fs::path& path) {
        return ::getxattr(path.c_str(), "user.quillbox.temporary", nullptr, 0) > 0;
    };
    const auto runs = [](std::uint64_t nthCall, bool deletes) {
        platform::file::setFaultPlan({.kind = platform::file::FaultKind::Kill, .nthCall = nthCall});
        bool good = DeclareTemporaryFile(u"\\t") != FALSE;
        const HANDLE file = open(u"\\t", GENERIC_WRITE, CREATE_ALWAYS);
        good = good && write(file, "temporary") == 9 && FlushFileBuffers(file) && CloseHandle(file);
        return good && (!deletes || DeleteFileW(u"\\t"));
    };
    const platform::file::Descriptor device(::open(outside().c_str(), O_RDONLY | O_DIRECTORY));
    const auto setAside = [&] { return platform::file::setLeftTemporariesAside(device.get()); };
    std::size_t left = 0;
    int status = -1;
    for (std::uint64_t n = 1; status != 0; n++) {
        SCOPED_TRACE(n);
        status = statusOfChild([&] { return runs(n, true); });
        EXPECT_EQ(isMarked(root()), n > 2) << "from before the name on";
        const bool wasThere = isMarked(root() / "t");
        left += wasThere ? 1 : 0;
        EXPECT_EQ(setAside(), wasThere ? std::vector<std::u16string>{u"t"} : std::vector<std::u16string>{});
        EXPECT_FALSE(isMarked(root()) || isMarked(root() / "t"));
        fs::remove(root() / "t");
    }
    EXPECT_GT(left, 2U);
    EXPECT_EQ(hostRead(outside() / "left-behind" / "t"), "temporary");
    EXPECT_EQ(hostCallsOf([&] { EXPECT_TRUE(setAside().empty()); }), 1U);

    // If a call fails or a file can't be moved, the next start searches again.
    ASSERT_EQ(statusOfChild([&] { return runs(0, false); }), 0);
    fs::remove_all(outside() / "left-behind");
    hostWrite(outside() / "left-behind", "in the way");
    EXPECT_TRUE(setAside().empty());
    ASSERT_EQ(statusOfChild([&] { return runs(0, true); }), 0);
    EXPECT_TRUE(isMarked(root()));
    fs::remove(outside() / "left-behind");
    for (std::uint64_t n = 1; isMarked(root()); n++) {
        platform::file::setFaultPlan({.kind = platform::file::FaultKind::Fail, .nthCall = n});
        const bool moved = !setAside().empty();
        platform::file::setFaultPlan({});
        EXPECT_TRUE(isMarked(root()) || moved || !isMarked(root() / "t")) << n;
    }
    EXPECT_FALSE(isMarked(root() / "t"));
}

TEST_F(TemporaryFileTest, AttributesAreReadAgainAfterAChange)
{
    hostWrite(root() / "f", "x");
    EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_SUCCESS);
    hostMark(root() / "f", "0x2040");
    EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_ACCESS_DENIED);

    HostStatus status = {};
    ASSERT_EQ(platform::file::readStatus(platform::file::rootFolder(), "f", status), 0);
    KnownAttributes& known = KnownAttributes::instance();
    EXPECT_FALSE(KnownAttributes::isSettled(platform::file::rootFolder(), status))
        << "a second change could leave the same time";
    known.note(status, FILE_ATTRIBUTE_INROM);
    EXPECT_EQ(known.find(status), FILE_ATTRIBUTE_INROM);
    status.stx_ctime.tv_nsec ^= 1;
    EXPECT_FALSE(known.find(status));
    status.stx_ctime.tv_nsec ^= 1;
    status.stx_dev_minor ^= 1;
    EXPECT_FALSE(known.find(status));
}

}  // namespace
