// ce/file_stamp.h - takes the stamp of a file, checks later by the stamp whether the file has changed, and deletes a
// file only if it still has its stamp.
//
// A program that moves the content of a file elsewhere takes the stamp of the open file before it reads the file. When
// the copy is safe, the program deletes the file by that stamp. If another program has written to the file after the
// stamp was taken, the file isn't deleted. A program that keeps the bytes of a file in memory can ask by the stamp
// whether the file still has these bytes.
#pragma once

#include "ce/types.h"

// The identity, length and times of an open file at one moment. A stamp can be copied and kept freely, since nothing
// has to be released.
struct FileStamp {
    std::uint64_t device;  // st_dev of the host
    std::uint64_t inode;
    std::uint64_t length;        // in bytes
    std::int64_t writeSeconds;   // last write of the content
    std::int64_t changeSeconds;  // last change of the content, names or permissions
    std::uint32_t writeNanoseconds;
    std::uint32_t changeNanoseconds;
    // Whether it is certain that each later write changes the times. It isn't certain in these cases:
    // - The last write was less than 50 ms before the stamp was taken. Another write could leave the same time.
    // - The write time is in the future.
    // - The change time has no fraction of a second, and the write time or the change time is less than 4 seconds old.
    //   The file system may be one that stores times in steps of one or two seconds.
    BOOL provesWrites;
    // Whether it is certain that no other process had the file open when the stamp was taken, and so none had it mapped
    // into memory. If a process has already written to a mapped page, its further writes to this page leave the file's
    // times unchanged until the host has written the page to the disk.
    BOOL wasAlone;
};

// Takes the stamp of an open file. Nonzero on success. Bytes that this process has buffered for the file are passed to
// the host first, so that the stamp includes them. If the file is open for reading only and not shared for writing, the
// call returns the stamp that was taken when the file was opened.
//
// For a proof, open the file for reading only and without sharing, and take the stamp before you read the file. For any
// other handle wasAlone is 0. If provesWrites and wasAlone are nonzero, each later change of the bytes also changes the
// file's times, so that a comparison with the stamp finds the change. This holds even for a program that maps the file
// into memory, because its first write changes the times (but not on tmpfs, see IsFileUnchanged).
//
// Returns 0 on failure. The last error is 6 if `file` isn't the handle of an open file, 87 if `stamp` is null, 31 if
// the host failed, or an error of WriteFile if buffered bytes can't be written.
BOOL GetFileStamp(HANDLE file, FileStamp* stamp);

// Nonzero if it is certain that the file at `path` still has the bytes that it had when the stamp was taken. There is
// one exception: on tmpfs a write through a memory mapping doesn't change the file's times, so this call doesn't notice
// it. 0 if the file has changed, was replaced or is gone. Also 0 if this can't be known: provesWrites or wasAlone is 0,
// the host failed, or this process may still buffer bytes that it has written to the file (WriteFile, ce/file.h).
// Doesn't set the last error, and the platform doesn't report a failure to the user.
BOOL IsFileUnchanged(const WCHAR* path, const FileStamp* stamp);

// Deletes the file at `path` if it still has the stamp, and neither this process nor another one has it open. Another
// process that opens the file during the call waits until the call ends.
// Fails with these errors:
//   2        the file doesn't exist
//   3        a folder of the path is missing or is a file
//   5, 19, 123, 206  for the same reasons as DeleteFileW
//   32       the file is open in this or another process, or another process began to open it during the call
//   50       the file system has no hard links, and can't rename a file without replacing one that has the new name. If
//            the call had to rename the file back (see below), it could destroy another file.
//   87       `stamp` is null
//   1006     another file is at the path, or the file has changed since the stamp was taken
//   1237     `provesWrites` is 0; after some seconds, take a new stamp, copy the file again, and repeat the call
//   31       the host failed
// The platform reports all errors except 2, 3, 32, 87, 1006 and 1237 to the user as failures of the device.
//
// The deletion has four steps. The call takes a lease on the file, renames the file within its folder to "NAME (being
// deleted by Quillbox 0123456789abcdef)", compares the renamed file with the stamp, and deletes it under that name. So
// a file that another program puts at the path is never deleted. If the process is killed after the renaming, the file
// keeps the other name.
//
// After a failure the file still has its content, and normally its old name. It keeps the other name if it can't be
// renamed back. The cause is a failure of the host, or another program that has made a new file at the path during the
// deletion.
//
// On network folders, on file systems without leases and for files of another user the host gives no lease. The call
// does the other steps nevertheless, but it doesn't notice if another program has the file open. What that program
// writes in the microseconds between the comparison and the deletion is lost. On a network folder the times are the
// server's. If the server's clock is slow, `provesWrites` may be nonzero too early.
BOOL DeleteUnchangedFile(const WCHAR* path, const FileStamp* stamp);
