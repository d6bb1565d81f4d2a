// file_fixture.h - a device in a temporary folder of the host: a root folder, and cards.
#pragma once

#include "file/host_faults.h"
#include "file/name_space.h"
#include "host_folder.h"

#include "ce/error.h"
#include "ce/file.h"
#include "ce/handle.h"

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>

inline constexpr DWORD Write = GENERIC_WRITE;

class FileTest : public HostFolder {
protected:
    explicit FileTest(const std::filesystem::path& parent = std::filesystem::temp_directory_path());
    ~FileTest() override;

    // Host side.
    [[nodiscard]] const std::filesystem::path& root() const { return root_; }
    [[nodiscard]] std::filesystem::path outside() const { return root_.parent_path(); }
    void hostMark(const std::filesystem::path& path, const std::string& attribute) const;
    // Mounts a folder "mounted NAME" of outside(), which can exist already.
    std::filesystem::path addFolder(const std::u16string& name, bool card,
                                    std::optional<std::uint64_t> capacity = std::nullopt) const;
    // Leaves the root alone mounted.
    void remount() const;

    // Device side.
    [[nodiscard]] static HANDLE open(const std::u16string& path, DWORD access, DWORD creation, DWORD share = 0);
    [[nodiscard]] static DWORD openError(const std::u16string& path, DWORD access, DWORD creation, DWORD share = 0);
    [[nodiscard]] static DWORD write(HANDLE file, const std::string& bytes);  // bytes written
    static void make(const std::u16string& path, const std::string& bytes);   // or replaces its content
    [[nodiscard]] static std::string read(HANDLE file, DWORD bytes);
    [[nodiscard]] static std::string readAll(const std::u16string& path, DWORD piece = 260);

    // 0 if the call succeeded, else the last error.
    [[nodiscard]] static DWORD errorOf(BOOL result) { return result ? 0 : GetLastError(); }
    [[nodiscard]] static std::set<std::u16string> list(const std::u16string& pattern);

    // Takes the failures that were noted since the last time, as "read \\path" or "write \\path".
    static std::set<std::u16string> takeNoted();

    // Runs `action` under the plan and returns the number of its host calls.
    static std::uint64_t hostCallsOf(const std::function<void()>& action, const platform::file::FaultPlan& plan = {});
    // Returns the wait status of a child process that runs `action`: 0 if the action ended, returning true.
    static int statusOfChild(const std::function<bool()>& action);

private:
    std::filesystem::path root_ = at("root");
};

// Another process that has a file open for the lifetime of this object.
class OtherProcess {
public:
    OtherProcess(const std::filesystem::path& path, int flags);
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess();

    [[nodiscard]] bool opened() const { return opened_; }

private:
    pid_t child_ = -1;
    bool opened_ = false;
};

// Bytes without a short period, so that a part at a wrong offset differs.
[[nodiscard]] std::string patternBytes(std::size_t count);
