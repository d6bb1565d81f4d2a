// device_path.h - from a path of the device to a place below a mounted host folder. Asks the host nothing.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <memory>
#include <string>

namespace platform::file {

struct HostPlace {
    DWORD error = 0;  // 123 or 206 if the path is none, 3 if there is no root folder; the rest is empty then
    std::shared_ptr<MountedFolder> mount;
    std::string path;              // below the mount, parts joined by '/'; empty: the mounted folder itself
    std::size_t nameStart = 0;     // of the last part in `path`
    bool endsInBackslash = false;  // and is not the root alone

    [[nodiscard]] bool isMount() const { return path.empty(); }
    [[nodiscard]] const char* name() const { return path.c_str() + nameStart; }

    // The folder that holds the entry, as openBelow takes it.
    [[nodiscard]] std::string parent() const { return nameStart == 0 ? "." : path.substr(0, nameStart - 1); }
};

// One trailing backslash is kept apart; more are an empty name.
[[nodiscard]] HostPlace resolvePath(std::u16string_view devicePath);

// The path as the device names it, from its root on.
[[nodiscard]] std::u16string devicePathOf(const HostPlace& place);

// The length of a path given by a caller: at most MAX_PATH are looked at.
[[nodiscard]] std::u16string_view boundedPath(const WCHAR* path);

}  // namespace platform::file
