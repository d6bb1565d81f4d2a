// host_calls.h - every system call that the file layer makes on the host's files and folders.
//
// No other source of this room makes such calls, so that a test can count them and make each one fail (host_gate.h). A
// negative result is a negative errno; errno itself isn't used. Interrupted calls are made again.
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

// What the host reports about a file or folder.
using HostStatus = struct statx;

// Opens `path` below `folder`; "." is the folder itself. The path can't lead out of the folder by "..", an absolute
// path or a link: no link is followed. Doesn't wait for the other end of a fifo.
[[nodiscard]] int openBelow(int folder, const char* path, int flags, unsigned mode = 0);

// Of a file that is made. The host takes the bits of the user's mask off.
inline constexpr unsigned NewFileMode = 0666;

// Reads the status of the entry `name` of `folder`, or with an empty name of the descriptor itself. Follows no link. A
// network file system can answer from what it knew some time ago, but not if the status is to be fresh.
enum class Status { AsKnown, Fresh };
[[nodiscard]] int readStatus(int folder, const char* name, HostStatus& status, Status wanted = Status::AsKnown);

// Reads the extended attribute `attribute` of the entry that readStatus would report about. The number of its bytes;
// -ENODATA if there is none, -ERANGE if `value` is too small.
[[nodiscard]] ssize_t readExtended(int folder, const char* name, const char* attribute, std::span<char> value);

// Sets or removes the extended attribute of an open file or folder.
[[nodiscard]] int writeExtended(int fileOrFolder, const char* attribute, std::span<const char> value);
[[nodiscard]] int removeExtended(int fileOrFolder, const char* attribute);

[[nodiscard]] ssize_t readAt(int file, std::span<std::byte> bytes, std::uint64_t offset);
[[nodiscard]] ssize_t writeAt(int file, std::span<const iovec> bytes, std::uint64_t offset);
// Writes all bytes; -ENOSPC if the host takes no more of them.
[[nodiscard]] int writeAllAt(int file, std::span<const std::byte> bytes, std::uint64_t offset);
[[nodiscard]] int setSize(int file, std::uint64_t size);

// Reserves room, also after the end of the file, which stays the same.
[[nodiscard]] int reserve(int file, std::uint64_t offset, std::uint64_t bytes);

[[nodiscard]] int flushToDisk(int fileOrFolder);

// Drops the pages of the file that are on the disk from the host's cache.
[[nodiscard]] int dropCached(int file);

// Flushes the whole file system that holds the file or folder. Fails if the host couldn't write some bytes since the
// descriptor was opened.
[[nodiscard]] int flushFileSystem(int fileOrFolder);

[[nodiscard]] int makeFolder(int folder, const char* name);
[[nodiscard]] int removeFile(int folder, const char* name);
[[nodiscard]] int removeEmptyFolder(int folder, const char* name);

// Gives an open file the owner, group and mode of `old` (host::setRights).
[[nodiscard]] int takeRights(int file, const HostStatus& old);

// Without `replace`: -EEXIST if `newName` exists, -EINVAL if the file system has no renaming that refuses to replace.
[[nodiscard]] int moveFile(int folder, const char* name, int newFolder, const char* newName, bool replace);

// Gives the file a second name; -EEXIST if there is such an entry.
[[nodiscard]] int linkFile(int folder, const char* name, const char* newName);

// Gives a nameless file (O_TMPFILE) its name; -EEXIST if there is such an entry.
[[nodiscard]] int nameFile(int file, int folder, const char* name);

// As getdents64: bytes of entries, 0 at the end.
[[nodiscard]] ssize_t readEntries(int folder, std::span<std::byte> entries);

struct FileSystem {
    std::uint64_t kind = 0;  // its magic number
    std::uint64_t blockBytes = 0;
};

// The file system that holds the file; empty if the host doesn't say. fileSystemOf asks the host less often.
[[nodiscard]] std::optional<FileSystem> readFileSystem(int file);

// Takes or drops a lease (F_RDLCK, F_WRLCK, F_UNLCK).
[[nodiscard]] int setLease(int file, int type);

// The lease that this process holds on the file. If another process waits for the file, the lease that remains.
[[nodiscard]] int leaseOf(int file);

}  // namespace platform::file
