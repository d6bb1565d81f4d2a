// host_calls.h - makes all system calls of the file layer (platform/file) on files and folders of the host (the Linux
// system).
//
// No other source file of the file layer makes such calls, so that a test can count them and make each one fail
// (host_gate.h). The exceptions are the closing of descriptors (host/descriptor.h) and power_cut.cpp, which only tests
// link. A negative result is a negative errno, so callers don't read errno. Interrupted calls are repeated.
#pragma once

#include "host/descriptor.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
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

// Opens `path` below `folder`; "." is the folder itself. No link is followed, and neither ".." nor an absolute path can
// lead out of the folder. Opening a fifo doesn't wait for a process at its other end.
[[nodiscard]] int openBelow(int folder, const char* path, int flags, unsigned mode = 0);

// The mode of a new file. The host clears the bits of the process's umask in it.
inline constexpr unsigned NewFileMode = 0666;

// Reads the status of the entry `name` of `folder`. If `name` is empty, reads the status of the descriptor itself. If
// the entry is a link, the status is that of the link. A network file system may answer from its cache. With
// Status::Fresh, the file system asks the server.
enum class Status { AsKnown, Fresh };
[[nodiscard]] int readStatus(int folder, const char* name, HostStatus& status, Status wanted = Status::AsKnown);

// Reads an extended attribute of the entry `name` of `folder`, or of the descriptor itself if `name` is empty. Returns
// the length of the value in bytes, -ENODATA if there is no such attribute, or -ERANGE if `value` is too small.
[[nodiscard]] ssize_t readExtended(int folder, const char* name, const char* attribute, std::span<char> value);

// Sets or removes the extended attribute of an open file or folder.
[[nodiscard]] int writeExtended(int fileOrFolder, const char* attribute, std::span<const char> value);
[[nodiscard]] int removeExtended(int fileOrFolder, const char* attribute);

[[nodiscard]] ssize_t readAt(int file, std::span<std::byte> bytes, std::uint64_t offset);
[[nodiscard]] ssize_t writeAt(int file, std::span<const iovec> bytes, std::uint64_t offset);
// Writes all bytes. Returns 0 or a negative errno, -ENOSPC if the host accepts 0 bytes.
[[nodiscard]] int writeAllAt(int file, std::span<const std::byte> bytes, std::uint64_t offset);
[[nodiscard]] int setSize(int file, std::uint64_t size);

// Reserves disk space for a range of the file, which can be after its end. The file's length doesn't change.
[[nodiscard]] int reserve(int file, std::uint64_t offset, std::uint64_t bytes);

[[nodiscard]] int flushToDisk(int fileOrFolder);

// Drops the file's pages from the host's cache, except pages that are not yet on the disk.
[[nodiscard]] int dropCached(int file);

// Flushes the whole file system that holds the file or folder. Also fails if the host has failed to write some bytes
// since the descriptor was opened.
[[nodiscard]] int flushFileSystem(int fileOrFolder);

[[nodiscard]] int makeFolder(int folder, const char* name);
[[nodiscard]] int removeFile(int folder, const char* name);
[[nodiscard]] int removeEmptyFolder(int folder, const char* name);

// Gives an open file the owner, group and mode of `old`, as far as this user may set them (host::setRights).
[[nodiscard]] int takeRights(int file, const HostStatus& old);

// Moves or renames a file. Without `replace`, the result is -EEXIST if `newName` exists, or -EINVAL if the file system
// doesn't support moves that check for an existing file (RENAME_NOREPLACE).
[[nodiscard]] int moveFile(int folder, const char* name, int newFolder, const char* newName, bool replace);

// Gives the file a second name. Returns -EEXIST if `newName` exists.
[[nodiscard]] int linkFile(int folder, const char* name, const char* newName);

// Gives an unnamed file its name. An unnamed file has no directory entry (O_TMPFILE). Returns -EEXIST if `name` exists.
[[nodiscard]] int nameFile(int file, int folder, const char* name);

// Reads entries of the folder like getdents64. Returns the number of bytes, 0 at the end of the folder.
[[nodiscard]] ssize_t readEntries(int folder, std::span<std::byte> entries);

struct FileSystem {
    std::uint64_t kind = 0;  // its magic number
    std::uint64_t blockBytes = 0;
};

// Returns the file system that holds the file. Empty if the host doesn't report it. Use fileSystemOf where possible,
// because it remembers the answers.
[[nodiscard]] std::optional<FileSystem> readFileSystem(int file);

// Reads the size and the free space of the file system that holds the file or folder.
[[nodiscard]] int readSpace(int fileOrFolder, struct statvfs& space);

// Takes or drops a lease (F_RDLCK, F_WRLCK, F_UNLCK).
[[nodiscard]] int setLease(int file, int type);

// Returns the type of the lease that this process holds on the file. If another process waits to open the file, returns
// the type to which the host will reduce the lease.
[[nodiscard]] int leaseOf(int file);

}  // namespace platform::file
