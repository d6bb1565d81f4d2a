// attributes.h - what the name space tells about a file or folder: attributes, times, identity.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

#include <cstdint>

namespace platform::file {

// The bits kept in the extended attribute `user.DOSATTRIB` of an entry (or, with an empty name, of the
// descriptor): hexadecimal text as "0x22"; whatever else stands there counts as no bits. Bits that say
// what the host itself knows (folder, normal, card) are left out. `status` is the entry's own, just read: the host is
// asked only if the answer isn't known from before.
struct StoredAttributes {
    DWORD bits = 0;
    int error = 0;  // a negative errno if there may be bits and the host failed to tell them
};
[[nodiscard]] StoredAttributes storedAttributes(int folder, const char* name, const HostStatus& status);

// All attributes of what the host describes by `status`; FILE_ATTRIBUTE_NORMAL if there is none.
[[nodiscard]] DWORD attributesOf(const HostStatus& status, DWORD stored, bool leadingPoint);

// Files and folders are part of the name space, nothing else is.
[[nodiscard]] bool isFile(const HostStatus& status);
[[nodiscard]] bool isFolder(const HostStatus& status);

[[nodiscard]] FILETIME fileTime(const statx_timestamp& time);

// The birth time where the host knows it, otherwise the earlier of the others.
[[nodiscard]] FILETIME creationTime(const HostStatus& status);

// Differs for two files that had one name or one inode one after the other.
[[nodiscard]] DWORD objectId(const HostStatus& status);

[[nodiscard]] std::uint64_t deviceOf(const HostStatus& status);

// A file of the host, whatever its name.
struct FileKey {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileKey&) const = default;
};

[[nodiscard]] FileKey keyOf(const HostStatus& status);

}  // namespace platform::file
