// temporary_file_test.cpp - a file that is made, read and deleted under one path again and again, and what is kept of
// it.
#include "file_fixture.h"

#include "attributes.h"
#include "known_attributes.h"

#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;
using platform::file::HostStatus;
using platform::file::KnownAttributes;

namespace {

class TemporaryFileTest : public FileTest {
protected:
    TemporaryFileTest() { fs::create_directory(root() / "d"); }

    static void make(const std::u16string& path, const std::string& bytes)
    {
        const HANDLE file = open(path, GENERIC_WRITE, CREATE_ALWAYS);
        EXPECT_EQ(write(file, bytes), bytes.size());
        EXPECT_TRUE(CloseHandle(file));
    }

    // So that the path counts as a temporary file's from here on.
    static void makeAndDelete(const std::u16string& path)
    {
        make(path, "earlier");
        EXPECT_TRUE(DeleteFileW(path.c_str()));
    }
};

TEST_F(TemporaryFileTest, EachOneHasItsOwnBytesAndGoesForGood)
{
    for (const std::u16string path : {u"\\d\\t", u"\\t"}) {
        for (int round = 0; round < 4; ++round) {
            const std::string bytes = patternBytes(3000) + std::to_string(round);
            make(path, bytes);
            EXPECT_EQ(readAll(path), bytes);
            EXPECT_EQ(readAll(path), bytes);
            EXPECT_TRUE(DeleteFileW(path.c_str()));
            EXPECT_EQ(openError(path, GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
        }
    }
    EXPECT_TRUE(fs::is_empty(root() / "d"));
}

TEST_F(TemporaryFileTest, AnothersFileUnderItsNameIsNotTakenForIt)
{
    makeAndDelete(u"\\d\\t");
    make(u"\\d\\t", "ours");
    hostWrite(root() / "d" / "other", "theirs");
    fs::rename(root() / "d" / "other", root() / "d" / "t");
    EXPECT_EQ(readAll(u"\\d\\t"), "theirs");

    make(u"\\d\\t", "ours");
    EXPECT_EQ(readAll(u"\\d\\t"), "ours");
    fs::remove(root() / "d" / "t");
    fs::create_symlink(root() / "kept", root() / "d" / "t");
    hostWrite(root() / "kept", "kept");
    EXPECT_FALSE(DeleteFileW(u"\\d\\t"));
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(hostRead(root() / "kept"), "kept");
}

TEST_F(TemporaryFileTest, NewOneNeverLandsOutsideWhenItsFolderWasMoved)
{
    makeAndDelete(u"\\d\\t");
    fs::rename(root() / "d", outside() / "moved");
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_WRITE, CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    fs::create_directory_symlink(outside() / "moved", root() / "d");
    EXPECT_NE(openError(u"\\d\\t", GENERIC_WRITE, CREATE_ALWAYS), ERROR_SUCCESS);
    hostWrite(outside() / "moved" / "t", "elsewhere");
    EXPECT_FALSE(DeleteFileW(u"\\d\\t"));
    EXPECT_EQ(hostRead(outside() / "moved" / "t"), "elsewhere");
}

TEST_F(TemporaryFileTest, SharingAndReadOnlyHoldForItToo)
{
    makeAndDelete(u"\\d\\t");
    make(u"\\d\\t", "ours");
    const HANDLE reader = open(u"\\d\\t", GENERIC_READ, OPEN_EXISTING);
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(DeleteFileW(u"\\d\\t"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(write(reader, "x"), 0U) << "its descriptor could, the handle may not";
    EXPECT_TRUE(CloseHandle(reader));
    fs::permissions(root() / "d" / "t", fs::perms::owner_read);
    EXPECT_FALSE(DeleteFileW(u"\\d\\t"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_WRITE, OPEN_EXISTING), ERROR_ACCESS_DENIED);
}

TEST_F(TemporaryFileTest, OneThatStaysIsNotHeldOpenBehindTheNextFile)
{
    makeAndDelete(u"\\d\\t");
    make(u"\\d\\t", "stays");
    make(u"\\d\\next", "next");
    // Nobody gets this lease while any other descriptor on the file is open.
    const int host = ::open((root() / "d" / "t").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(host, 0);
    EXPECT_EQ(::fcntl(host, F_SETLEASE, F_WRLCK), 0);
    ::close(host);
}

// What was known of a file is of no use once it has changed.
TEST_F(TemporaryFileTest, AttributesAreAskedForAgainAfterAChange)
{
    hostWrite(root() / "f", "x");
    EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_SUCCESS);
    hostMark(root() / "f", "0x2040");
    EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), ERROR_ACCESS_DENIED);

    HostStatus status = {};
    ASSERT_EQ(platform::file::readStatus(platform::file::rootFolder(), "f", status), 0);
    KnownAttributes& known = KnownAttributes::instance();
    EXPECT_FALSE(KnownAttributes::isSettled(platform::file::rootFolder(), status)) << "a change could go unseen";
    known.note(status, FILE_ATTRIBUTE_INROM);
    EXPECT_EQ(known.find(status), FILE_ATTRIBUTE_INROM);
    HostStatus changed = status;
    changed.stx_ctime.tv_nsec ^= 1;
    EXPECT_FALSE(known.find(changed));
    HostStatus elsewhere = status;
    elsewhere.stx_dev_minor ^= 1;
    EXPECT_FALSE(known.find(elsewhere));
}

// Small pieces of a small file wait for one another; nobody on the device may see that.
TEST_F(TemporaryFileTest, SmallFileTellsOfBytesThatTheHostHasNotSeenYet)
{
    const std::string bytes = patternBytes(6000);
    const HANDLE file = open(u"\\f", GENERIC_WRITE, CREATE_ALWAYS, FILE_SHARE_READ);
    for (std::size_t place = 0; place < bytes.size(); place += 100)
        ASSERT_EQ(write(file, bytes.substr(place, 100)), 100U);
    WIN32_FIND_DATAW found = {};
    FindClose(FindFirstFileW(u"\\f", &found));
    EXPECT_EQ(found.nFileSizeLow, 6000U);
    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_WRITE | FILE_SHARE_READ);
    EXPECT_EQ(read(reader, 7000), bytes);
    CloseHandle(reader);

    // A hole has no block whose rest could be filled.
    EXPECT_EQ(SetFilePointer(file, 9000, nullptr, FILE_BEGIN), 9000U);
    EXPECT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(write(file, "end"), 3U);
    EXPECT_EQ(hostRead(root() / "f"), bytes + std::string(3000, '\0') + "end");
    EXPECT_TRUE(CloseHandle(file));
}

}  // namespace
