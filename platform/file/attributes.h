// attributes.h - attributes, times and identity of a file or folder, from what the host reports about it.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

#include <cstdint>

namespace platform::file {

// All attributes; FILE_ATTRIBUTE_NORMAL if there is no other. `stored` are those of storedAttributes. `leadingPoint`:
// the name begins with a point.
DWORD attributesOf(const HostStatus& status, DWORD stored, bool leadingPoint);

// Only files and folders are part of the name space.
bool isFile(const HostStatus& status);
bool isFolder(const HostStatus& status);

FILETIME fileTime(const statx_timestamp& time);

// The birth time if the file system keeps it, otherwise the earlier of the times of change and of writing.
FILETIME creationTime(const HostStatus& status);

// Differs between two files that had the same name or the same inode number one after the other.
DWORD objectId(const HostStatus& status);

// The number of the host's device (its file system).
std::uint64_t deviceOf(const HostStatus& status);

// Identifies a file of the host, whatever its name.
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
