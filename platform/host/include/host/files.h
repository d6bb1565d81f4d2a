// files.h - what several rooms do with files of the host outside the device's name space.
#pragma once

#include "host/descriptor.h"

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace platform::host {

// Who owns a file, and who may do what with it.
struct Rights {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;  // other bits than the permissions are ignored
};

// Gives an open file these rights. An owner or a group that this user can't set is left as it is. If that is the group,
// it gets no permissions, because they were meant for another group. 0, or the errno if the mode can't be set.
[[nodiscard]] int setRights(int file, const Rights& rights);

// Writes a file to the disk. Follows no link. 0 or the errno.
[[nodiscard]] int flush(const std::filesystem::path& file);
// Writes the entries of a folder to the disk. The path may be a link to it. 0 or the errno.
[[nodiscard]] int flushFolder(const std::filesystem::path& folder);

// 16 hexadecimal digits that nobody can predict, for the name of a file that no other program may use.
std::string unguessableName();

}  // namespace platform::host
