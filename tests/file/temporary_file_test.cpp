// temporary_file_test.cpp - a file that is made, read and deleted at one path again and again, and what is cached of
// it.
#include "file_fixture.h"

#include "attributes.h"
#include "known_attributes.h"

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

    // After this, a new file at the path counts as temporary.
    static void makeAndDelete(const std::u16string& path)
    {
        make(path, "earlier");
        EXPECT_TRUE(DeleteFileW(path.c_str()));
    }
};

TEST_F(TemporaryFileTest, FileOfAnotherProgramAtItsPathIsNotTakenForIt)
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

TEST_F(TemporaryFileTest, IsNeverMadeOutsideTheDeviceAfterItsFolderWasMoved)
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

TEST_F(TemporaryFileTest, FollowsTheRulesOfSharingAndReadOnlyFiles)
{
    makeAndDelete(u"\\d\\t");
    make(u"\\d\\t", "ours");
    const HANDLE reader = open(u"\\d\\t", GENERIC_READ, OPEN_EXISTING);
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(errorOf(DeleteFileW(u"\\d\\t")), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(write(reader, "x"), 0U) << "the descriptor could write, but the handle may only read";
    EXPECT_TRUE(CloseHandle(reader));
    fs::permissions(root() / "d" / "t", fs::perms::owner_read);
    EXPECT_EQ(errorOf(DeleteFileW(u"\\d\\t")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(openError(u"\\d\\t", GENERIC_WRITE, OPEN_EXISTING), ERROR_ACCESS_DENIED);
}

TEST_F(TemporaryFileTest, IsNoLongerHeldOpenWhenTheNextFileIsMade)
{
    makeAndDelete(u"\\d\\t");
    make(u"\\d\\t", "stays");
    make(u"\\d\\next", "next");
    // The kernel grants this lease only if no other descriptor of the file is open.
    const int host = ::open((root() / "d" / "t").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(host, 0);
    EXPECT_EQ(::fcntl(host, F_SETLEASE, F_WRLCK), 0);
    ::close(host);
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
    HostStatus changed = status;
    changed.stx_ctime.tv_nsec ^= 1;
    EXPECT_FALSE(known.find(changed));
    HostStatus elsewhere = status;
    elsewhere.stx_dev_minor ^= 1;
    EXPECT_FALSE(known.find(elsewhere));
}

}  // namespace
