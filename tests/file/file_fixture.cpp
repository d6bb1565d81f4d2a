#include "file_fixture.h"

#include "kernel/troubles.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

using namespace platform::file;

FileTest::FileTest(const std::filesystem::path& parent) : HostFolder(parent)
{
    std::filesystem::create_directory(root_);
    remount();
}

FileTest::~FileTest()
{
    removeAllMounts();
}

void FileTest::remount() const
{
    removeAllMounts();
    if (!addMount({u"", ::open(root_.c_str(), O_RDONLY | O_DIRECTORY), false, std::nullopt}))
        std::abort();
}

std::filesystem::path FileTest::addFolder(const std::u16string& name, bool card,
                                          std::optional<std::uint64_t> capacity) const
{
    const std::filesystem::path folder = at("mounted " + std::filesystem::path(name).string());
    std::filesystem::create_directory(folder);
    if (!addMount({name, ::open(folder.c_str(), O_RDONLY | O_DIRECTORY), card, capacity}))
        std::abort();
    return folder;
}

void FileTest::hostMark(const std::filesystem::path& path, const std::string& attribute) const
{
    ASSERT_EQ(::setxattr(path.c_str(), "user.DOSATTRIB", attribute.data(), attribute.size(), 0), 0)
        << "the temporary folder's file system needs user attributes";
}

HANDLE FileTest::open(const std::u16string& path, DWORD access, DWORD creation, DWORD share)
{
    return CreateFileW(path.c_str(), access, share, nullptr, creation, 0, nullptr);
}

DWORD FileTest::openError(const std::u16string& path, DWORD access, DWORD creation, DWORD share)
{
    SetLastError(0);
    const HANDLE file = open(path, access, creation, share);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError();
    CloseHandle(file);
    return 0;
}

DWORD FileTest::write(HANDLE file, const std::string& bytes)
{
    DWORD written = 0;
    (void)WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return written;
}

void FileTest::make(const std::u16string& path, const std::string& bytes)
{
    const HANDLE file = open(path, GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(write(file, bytes), bytes.size());
    EXPECT_TRUE(CloseHandle(file));
}

std::string FileTest::read(HANDLE file, DWORD bytes)
{
    std::string buffer(bytes, '\0');
    DWORD got = 0;
    (void)ReadFile(file, buffer.data(), bytes, &got, nullptr);
    buffer.resize(got);
    return buffer;
}

std::string FileTest::readAll(const std::u16string& path, DWORD piece)
{
    const HANDLE file = open(path, GENERIC_READ, OPEN_EXISTING);
    std::string all;
    for (std::string part = read(file, piece); !part.empty(); part = read(file, piece))
        all += part;
    CloseHandle(file);
    return all;
}

std::set<std::u16string> FileTest::list(const std::u16string& pattern)
{
    std::set<std::u16string> names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        EXPECT_TRUE(names.insert(found.cFileName).second) << "listed twice";
    while (FindNextFileW(search, &found));
    EXPECT_TRUE(FindClose(search));
    return names;
}

std::set<std::u16string> FileTest::takeNoted()
{
    using namespace platform::kernel;
    std::set<std::u16string> noted;
    for (const Trouble kind : {Trouble::Reading, Trouble::Writing}) {
        for (const auto& each : troublesOf(kind, Troubled::File)) {
            noted.insert((kind == Trouble::Reading ? u"read " : u"write ") + each.name);
            forgetTrouble(kind, Troubled::File, each.name, each.error);
        }
    }
    return noted;
}

std::uint64_t FileTest::hostCallsOf(const std::function<void()>& action, const FaultPlan& plan)
{
    setFaultPlan(plan);
    action();
    const std::uint64_t calls = hostCallsMade();
    clearFaultPlan();
    return calls;
}

int FileTest::statusOfChild(const std::function<bool()>& action)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(action() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

// The child inherits the descriptor, so nothing has to wait for it.
OtherProcess::OtherProcess(const std::filesystem::path& path, int flags)
{
    const int file = ::open(path.c_str(), flags);
    opened_ = file >= 0;
    child_ = ::fork();
    while (child_ == 0)
        ::pause();
    ::close(file);
}

OtherProcess::~OtherProcess()
{
    if (child_ <= 0)
        return;
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
}

std::string patternBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    std::uint32_t state = 12345;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
