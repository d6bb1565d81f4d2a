// file_fixture.h - a device in a temporary folder of the host: a root folder, and cards.
#pragma once

#include "file/host_faults.h"
#include "file/name_space.h"
#include "host_folder.h"
#include "kernel/troubles.h"

#include "ce/error.h"
#include "ce/file.h"
#include "ce/handle.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>

inline constexpr DWORD Write = GENERIC_WRITE;

class FileTest : public HostFolder {
protected:
    explicit FileTest(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) : HostFolder(parent)
    {
        std::filesystem::create_directory(root_);
        remount();
    }
    ~FileTest() override { platform::file::removeAllMounts(); }

    // Host side.
    [[nodiscard]] const std::filesystem::path& root() const { return root_; }
    [[nodiscard]] std::filesystem::path outside() const { return root_.parent_path(); }
    void hostMark(const std::filesystem::path& path, const std::string& attribute) const
    {
        ASSERT_EQ(::setxattr(path.c_str(), "user.DOSATTRIB", attribute.data(), attribute.size(), 0), 0)
            << "the temporary folder's file system needs user attributes";
    }
    // Mounts the folder "mounted NAME" in outside(). Creates it if it doesn't exist.
    std::filesystem::path addFolder(const std::u16string& name, bool card,
                                    std::optional<std::uint64_t> capacity = std::nullopt) const
    {
        const std::filesystem::path folder = at("mounted " + std::filesystem::path(name).string());
        std::filesystem::create_directory(folder);
        if (!platform::file::addMount({name, ::open(folder.c_str(), O_RDONLY | O_DIRECTORY), card, capacity}))
            std::abort();
        return folder;
    }
    // Removes all mounts and mounts the root again.
    void remount() const
    {
        platform::file::removeAllMounts();
        if (!platform::file::addMount({u"", ::open(root_.c_str(), O_RDONLY | O_DIRECTORY), false, std::nullopt}))
            std::abort();
    }

    // Device side.
    [[nodiscard]] static HANDLE open(const std::u16string& path, DWORD access, DWORD creation, DWORD share = 0)
    {
        return CreateFileW(path.c_str(), access, share, nullptr, creation, 0, nullptr);
    }
    [[nodiscard]] static DWORD openError(const std::u16string& path, DWORD access, DWORD creation, DWORD share = 0)
    {
        SetLastError(0);
        const HANDLE file = open(path, access, creation, share);
        if (file == INVALID_HANDLE_VALUE)
            return GetLastError();
        CloseHandle(file);
        return 0;
    }
    // Returns the number of bytes that were written.
    [[nodiscard]] static DWORD write(HANDLE file, const std::string& bytes)
    {
        DWORD written = 0;
        (void)WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        return written;
    }
    // Makes a file or replaces its content.
    static void make(const std::u16string& path, const std::string& bytes)
    {
        const HANDLE file = open(path, GENERIC_WRITE, CREATE_ALWAYS);
        EXPECT_EQ(write(file, bytes), bytes.size());
        EXPECT_TRUE(CloseHandle(file));
    }
    [[nodiscard]] static std::string read(HANDLE file, DWORD bytes)
    {
        std::string buffer(bytes, '\0');
        DWORD got = 0;
        (void)ReadFile(file, buffer.data(), bytes, &got, nullptr);
        buffer.resize(got);
        return buffer;
    }
    [[nodiscard]] static std::string readAll(const std::u16string& path, DWORD piece = 260)
    {
        const HANDLE file = open(path, GENERIC_READ, OPEN_EXISTING);
        std::string all;
        for (std::string part = read(file, piece); !part.empty(); part = read(file, piece))
            all += part;
        CloseHandle(file);
        return all;
    }

    // Returns 0 if the call succeeded, or the last error.
    [[nodiscard]] static DWORD errorOf(BOOL result) { return result ? 0 : GetLastError(); }
    [[nodiscard]] static std::set<std::u16string> list(const std::u16string& pattern)
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

    // Returns the failures that were noted, as "read \\path" or "write \\path", and forgets them.
    static std::set<std::u16string> takeNoted()
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

    // Runs `action` under the plan and returns the number of its host calls.
    static std::uint64_t hostCallsOf(const std::function<void()>& action, const platform::file::FaultPlan& plan = {})
    {
        platform::file::setFaultPlan(plan);
        action();
        const std::uint64_t calls = platform::file::hostCallsMade();
        platform::file::clearFaultPlan();
        return calls;
    }
    // Returns the wait status of a child process that runs `action`. The status is 0 if `action` returned true.
    static int statusOfChild(const std::function<bool()>& action)
    {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(action() ? 0 : 1);
        int status = -1;
        ::waitpid(child, &status, 0);
        return status;
    }

private:
    std::filesystem::path root_ = at("root");
};

// Another process that has a file open for the lifetime of this object.
class OtherProcess {
public:
    // The file is open in the child as soon as the child exists, because it inherits the descriptor.
    OtherProcess(const std::filesystem::path& path, int flags)
    {
        const int file = ::open(path.c_str(), flags);
        opened_ = file >= 0;
        child_ = ::fork();
        while (child_ == 0)
            ::pause();
        ::close(file);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess()
    {
        if (child_ <= 0)
            return;
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }

    [[nodiscard]] bool opened() const { return opened_; }

private:
    pid_t child_ = -1;
    bool opened_ = false;
};

// Returns bytes without a short period, so that a comparison finds bytes at a wrong offset.
[[nodiscard]] inline std::string patternBytes(std::size_t count, std::uint32_t seed = 12345)
{
    std::string bytes(count, '\0');
    std::uint32_t state = seed;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
