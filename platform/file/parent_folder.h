// parent_folder.h - looks up the directory entry of a device path.
#pragma once

#include "device_path.h"
#include "host_calls.h"

#include "ce/types.h"

namespace platform::file {

// The folder that contains the entry of a path, opened to look up entries. If the path is that of a mounted folder or
// of an entry directly in it, the object uses the descriptor of the mounted folder and opens none.
class ParentFolder {
public:
    explicit ParentFolder(const HostPath& path);

    // A descriptor, or a negative errno.
    int get() const { return number_; }

private:
    Descriptor opened_;
    int number_ = -1;
};

// Opens an entry like openBelow, where `flags` has O_CREAT. If the entry's folder is deep, the call keeps it open for a
// moment (kept_folder.h). A later call for the same folder then looks up only the name of its entry. A folder that
// isn't deep isn't kept open, so each call looks up the whole path from the mounted folder.
[[nodiscard]] int makeEntry(const HostPath& path, int flags, unsigned mode);

// Returns the error for a path that no file can have, and 0 for any other path.
[[nodiscard]] DWORD cannotBeAFile(const HostPath& path);

// Reads the status of the entry. Returns 0 or a negative errno, which is -ELOOP if the entry is neither a file nor a
// folder.
[[nodiscard]] int statusAt(const ParentFolder& parent, const HostPath& path, HostStatus& status);

// Translates a negative errno of statusAt, or of another call on the entry, to an error of the platform. If the entry
// is missing, the error is 2. If a folder of the path is missing, the error is 3.
[[nodiscard]] DWORD errorAt(const HostPath& path, const ParentFolder& parent, int result);

// Returns the error for a call that found no entry: 3 if a folder of the path is missing, the host's error if a folder
// of the path can't be searched, otherwise 2.
[[nodiscard]] DWORD missingError(const HostPath& path);

// Whether the entry is a link, a fifo, a socket or a device node. These are not part of the device's name space.
bool isOutsideNameSpace(const HostPath& path);

}  // namespace platform::file
