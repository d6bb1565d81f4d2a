// device_path.h - translates a path of the device to a path below a mounted host folder. The only calls on the host are
// those that open a removable card.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <string>
#include <string_view>

namespace platform::file {

struct HostPath {
    // 0 or the error: 206 if the path has more than 259 characters, 123 if it is empty or has an invalid name, 3 if
    // there is no root folder, 21 if the card of the path was removed, otherwise the error of opening the card. After
    // an error the other fields have their default values.
    DWORD error = 0;
    MountUse mount;
    std::string below;             // the path below the mount, parts joined by '/'; empty for the mounted folder itself
    std::size_t nameStart = 0;     // offset of the last part in `below`
    bool endsInBackslash = false;  // of the device path; false for the root alone

    bool isMount() const { return below.empty(); }
    const char* name() const { return below.c_str() + nameStart; }

    bool isSame(const HostPath& other) const { return mount == other.mount && below == other.below; }

    // The path below the mount of the folder that contains the entry. Empty if that is the mounted folder itself.
    std::string_view folder() const { return std::string_view(below).substr(0, nameStart == 0 ? 0 : nameStart - 1); }
};

// Translates a path of the device. Accepts one trailing backslash, and sets endsInBackslash for it. Two trailing
// backslashes are an error, because there is an empty name between them.
HostPath resolvePath(std::u16string_view devicePath);

// Returns the full path on the device. It begins with a backslash, which means the device's root.
std::u16string devicePathOf(const HostPath& hostPath);

// Returns the caller's path as a view, which is empty for null. Reads at most MAX_PATH characters.
std::u16string_view boundedPath(const WCHAR* path);

}  // namespace platform::file
