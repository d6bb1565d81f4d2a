#include "file_fixture.h"

#include "kernel/troubles.h"

#include <fcntl.h>

#include <csignal>

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

std::string patternBytes(std::size_t count, std::uint32_t seed)
{
    std::string bytes(count, '\0');
    std::uint32_t state = seed;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
