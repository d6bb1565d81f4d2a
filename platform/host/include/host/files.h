// files.h - sets the rights of files of the host (the Linux system), flushes them, and makes names for them. These
// files needn't have a path on the device.
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
    mode_t mode = 0;  // bits other than the permissions are ignored
};

// Sets the rights of an open file. If this user may not set the owner, the owner stays unchanged. The same is true for
// the group. If the group stays unchanged for this reason, it gets no permissions, because the group permissions in
// `rights` are meant for another group. Returns 0, or the errno if the mode can't be set.
[[nodiscard]] int setRights(int file, const Rights& rights);

// Flushes a file to the disk. Fails if the path is a symbolic link. Returns 0 or the errno.
[[nodiscard]] int flush(const std::filesystem::path& file);
// Flushes the directory entries of a folder to the disk. The path may be a symbolic link to the folder. Returns 0 or
// the errno.
[[nodiscard]] int flushFolder(const std::filesystem::path& folder);

// Returns 16 hexadecimal digits that nobody can predict. A file name with these digits doesn't collide with a name that
// another program uses.
std::string unguessableName();

}  // namespace platform::host
