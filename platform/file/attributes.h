// attributes.h - derives the attributes, times and identity of a file or folder from what the host (the Linux system)
// reports about it.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

#include <cstdint>

namespace platform::file {

// Returns the attributes, or FILE_ATTRIBUTE_NORMAL if there are none. The caller adds FILE_ATTRIBUTE_TEMPORARY for a
// card. `stored` is what storedAttributes returned. `leadingPoint` says whether the name begins with a dot.
DWORD attributesOf(const HostStatus& status, DWORD stored, bool leadingPoint);

// The device's name space contains only files and folders. Links, fifos, sockets and device nodes of the host aren't
// part of it.
bool isFile(const HostStatus& status);
bool isFolder(const HostStatus& status);

FILETIME fileTime(const statx_timestamp& time);

// Returns the birth time if the file system stores it. Otherwise returns the change time (ctime) or the write time
// (mtime), whichever is earlier.
FILETIME creationTime(const HostStatus& status);

// Returns a nonzero number, computed from the inode number and, if the file system stores it, the birth time. A later
// file of the same name nearly always gets another number. It can get the same number if the file system stores no
// birth times and uses the inode number of the deleted file again.
DWORD objectId(const HostStatus& status);

// The host's number of the file system (st_dev) that contains the file or folder.
std::uint64_t deviceOf(const HostStatus& status);

// Identifies a file of the host independently of its name.
struct FileKey {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileKey&) const = default;
    bool operator<(const FileKey& other) const
    {
        return device != other.device ? device < other.device : inode < other.inode;
    }
};

FileKey keyOf(const HostStatus& status);

}  // namespace platform::file
