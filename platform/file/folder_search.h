// folder_search.h - defines FolderSearch, the object behind the handle that FindFirstFileW returns.
#pragma once

#include "device_path.h"
#include "folder_reader.h"
#include "kernel/handle_table.h"
#include "mounted_folder.h"
#include "open_files.h"

#include "ce/file.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform::file {

class FolderSearch final : public kernel::Object {
public:
    FolderSearch(const HostPath& folder, Descriptor opened, std::u16string pattern, Wanted wanted);

    [[nodiscard]] bool takesCloseHandle() const override { return false; }

    // The folder's path on the device.
    const std::u16string& path() const { return path_; }

    // Fills `found` with the next entry. Returns 0, ERROR_NO_MORE_FILES, or the error of reading the folder.
    [[nodiscard]] DWORD next(WIN32_FIND_DATAW& found);

private:
    [[nodiscard]] bool nextMount(WIN32_FIND_DATAW& found);
    [[nodiscard]] bool describe(std::string_view hostName, std::u16string_view name, WIN32_FIND_DATAW& found);

    [[nodiscard]] DWORD attributes(int folder, const char* hostName, std::u16string_view name,
                                   const HostStatus& status) const;
    void noteUnread(std::u16string_view name, int error) const;

    std::mutex mutex_;
    OpenFiles& table_;
    const MountUse mount_;
    const bool isRoot_;
    const std::u16string path_;
    const std::u16string pattern_;
    const Wanted wanted_;
    FolderReader reader_;
    const std::vector<MountedFolder*>& mounts_;
    std::size_t mountsSeen_ = 0;
};

// The result of beginSearch, which opens the folder for a search. `error` is 0 or an error of FindFirstFileW. It
// doesn't say whether an entry matches the pattern, because only next() compares entries with the pattern. `search` is
// null after an error.
struct SearchBegun {
    DWORD error = 0;
    std::shared_ptr<FolderSearch> search;
};
[[nodiscard]] SearchBegun beginSearch(std::u16string_view pathWithPattern, Wanted wanted);

}  // namespace platform::file
