// parent_folder.h - looks up the entry of a folder that a path of the device names.
#pragma once

#include "device_path.h"
#include "host_calls.h"

#include "ce/types.h"

namespace platform::file {

// The folder that holds the entry, opened for reaching entries. For an entry directly in a mounted folder this is the
// mount's descriptor, and none is opened.
class ParentFolder {
public:
    explicit ParentFolder(const HostPath& path);

    // A descriptor, or a negative errno.
    int get() const { return number_; }

private:
    Descriptor opened_;
    int number_ = -1;
};

// The error for a path that no file can have; 0 for any other path.
[[nodiscard]] DWORD cannotBeAFile(const HostPath& path);

// Reads the status of the entry. A negative errno if there is no entry, or one that is not part of the name space.
[[nodiscard]] int statusAt(const ParentFolder& parent, const HostPath& path, HostStatus& status);

// The error for a negative errno of statusAt, or of another call on the entry.
[[nodiscard]] DWORD errorAt(const HostPath& path, const ParentFolder& parent, int result);

// The error for a call that found no entry: 3 if a folder of the path is missing, the host's error if that folder can't
// be searched, otherwise 2.
[[nodiscard]] DWORD missingError(const HostPath& path);

// Is the entry a link, a fifo, a socket or a device? They are not part of the name space.
bool isOutsideNameSpace(const HostPath& path);

}  // namespace platform::file
