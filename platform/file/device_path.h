// device_path.h - translates a path of the device to a path below a mounted host folder. Makes no call on the host.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <string>
#include <string_view>

namespace platform::file {

struct HostPath {
    // 123 or 206 for an invalid path, 3 without a root folder, 21 in a card that was taken out, or the error of opening
    // a card; the other fields are empty then.
    DWORD error = 0;
    MountUse mount;
    std::string below;             // the path below the mount, parts joined by '/'; empty for the mounted folder itself
    std::size_t nameStart = 0;     // offset of the last part in `below`
    bool endsInBackslash = false;  // and is not the root alone

    bool isMount() const { return below.empty(); }
    const char* name() const { return below.c_str() + nameStart; }

    bool isSame(const HostPath& other) const { return mount == other.mount && below == other.below; }

    // The path of the folder that contains the entry, as openBelow takes it.
    std::string parent() const { return nameStart == 0 ? "." : below.substr(0, nameStart - 1); }
};

// One trailing backslash is accepted and noted; two make an empty name, which is an error.
HostPath resolvePath(std::u16string_view devicePath);

// The path on the device, from its root on.
std::u16string devicePathOf(const HostPath& hostPath);

// A path given by a caller, of which at most MAX_PATH characters are read. Empty for null.
std::u16string_view boundedPath(const WCHAR* path);

}  // namespace platform::file
