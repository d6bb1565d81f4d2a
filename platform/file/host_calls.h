// host_calls.h - every system call that the file layer makes on the host's files and folders.
//
// The one choke point: each call is counted and can be made to fail (host_faults.h). A result below 0 is a
// negative errno; errno itself is not used. Interrupted calls are made again.
#pragma once

#include "host/descriptor.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace platform::file {

using host::Descriptor;

// What the host tells about a file or folder.
using HostStatus = struct statx;

// Opens `path` below `folder`; "." is the folder itself. Neither "..", an absolute path nor any link leads
// out of it: links are not followed at all. Never waits for the other end of a fifo.
[[nodiscard]] int openBelow(int folder, const char* path, int flags, unsigned mode = 0);

// Of the entry `name` of `folder`, not following a link; with an empty name of the descriptor itself.
[[nodiscard]] int readStatus(int folder, const char* name, HostStatus& status);

// The value of the extended attribute `attribute`, of what readStatus would tell about: its bytes.
// -ENODATA without one, -ERANGE if it doesn't fit.
[[nodiscard]] ssize_t readExtended(int folder, const char* name, const char* attribute, std::span<char> value);

// Sets the extended attribute of an open file.
[[nodiscard]] int writeExtended(int file, const char* attribute, std::span<const char> value);

[[nodiscard]] ssize_t readAt(int file, std::span<std::byte> bytes, std::uint64_t place);
[[nodiscard]] ssize_t writeAt(int file, std::span<const iovec> bytes, std::uint64_t place);
[[nodiscard]] int setSize(int file, std::uint64_t size);

// Reserves room behind the end, which stays where it is.
[[nodiscard]] int reserve(int file, std::uint64_t place, std::uint64_t bytes);

[[nodiscard]] int flushToDisk(int fileOrFolder);

// All of the file system that holds the file or folder. Tells of bytes that the host couldn't write since the
// descriptor was opened.
[[nodiscard]] int flushFileSystem(int fileOrFolder);

[[nodiscard]] int makeFolder(int folder, const char* name);
[[nodiscard]] int removeFile(int folder, const char* name);
[[nodiscard]] int removeEmptyFolder(int folder, const char* name);

// Gives an open file the owner, the group and the mode of `old`. An owner or group that can't be given is left, and
// nobody gets a right by that.
[[nodiscard]] int takeRights(int file, const HostStatus& old);

// -EEXIST if there is such an entry and it isn't to be replaced; -EINVAL where the file system can't refuse that.
[[nodiscard]] int moveFile(int folder, const char* name, int newFolder, const char* newName, bool replace);

// Gives the file a second name; -EEXIST if there is such an entry.
[[nodiscard]] int linkFile(int folder, const char* name, const char* newName);

// As getdents64: bytes of entries, 0 at the end.
[[nodiscard]] ssize_t readEntries(int folder, std::span<std::byte> entries);

struct FileSystem {
    std::uint64_t kind = 0;  // its magic number
    std::uint64_t blockBytes = 0;
};

// The file system that holds the file; nothing if the host doesn't tell. fileSystemOf asks less often.
[[nodiscard]] std::optional<FileSystem> readFileSystem(int file);

// Takes or drops a lease (F_RDLCK, F_WRLCK, F_UNLCK).
[[nodiscard]] int setLease(int file, int type);

// The lease that is held, and if somebody waits for the file the one that he leaves.
[[nodiscard]] int leaseOf(int file);

}  // namespace platform::file
