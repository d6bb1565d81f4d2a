// ce/file_stamp.h - says by a stamp whether a file has changed since it was read, and deletes it only if it hasn't.
//
// A program that moves content elsewhere stamps the open file before it reads, and deletes it by that stamp when its
// copy is safe. Content that another program writes after the stamp isn't deleted. A program that keeps what it read
// asks by the stamp whether the file still has it.
#pragma once

#include "ce/types.h"

// Identity, length and times of an open file at one moment. It holds no resources, so copy and keep it freely.
struct FileStamp {
    std::uint64_t device;  // which file
    std::uint64_t inode;
    std::uint64_t length;        // in bytes
    std::int64_t writeSeconds;   // last write of the content
    std::int64_t changeSeconds;  // last change of the content, names or permissions
    std::uint32_t writeNanoseconds;
    std::uint32_t changeNanoseconds;
    // Whether each later write changes the times. That isn't certain if the file was written less than 50 ms before the
    // stamp was taken, because a second write could leave the same time. Some file systems count in steps of one or two
    // seconds. So if the time of change has no fraction of a second, both times must be at least 4 seconds old. It
    // isn't certain either if a time is in the future.
    BOOL provesWrites;
    // Whether it is certain that no other process had the file open, and so none had it mapped into memory. A write to
    // a page that was mapped and written before changes no time until the host has written that page to the disk.
    BOOL wasAlone;
};

// Nonzero on success. Bytes that this process has gathered for the file are passed to the host first, so that the stamp
// includes them. Open the file without sharing, take the stamp at once, and read then. Each change of the bytes that
// are read then shows, even one by a program that has mapped the file into memory, whose first write alone changes the
// times. For a file that is open for reading only and not shared for writing, the stamp is that of its opening.
// 0 on failure: 6 for a handle that is no open file, 31, 87 for a null stamp, and the errors of WriteFile.
BOOL GetFileStamp(HANDLE file, FileStamp* stamp);

// Nonzero if the file at `path` certainly still has the bytes that it had at its stamp. 0 if it has changed, is another
// file, is gone, or if that can't be said: provesWrites or wasAlone is 0, or the host failed. Sets no error, and notes
// no failure of the device. On tmpfs a write to a file that is mapped into memory changes no time, so it isn't seen.
BOOL IsFileUnchanged(const WCHAR* path, const FileStamp* stamp);

// Deletes the file at `path` if it still has the stamp, and neither this process nor another one has it open. Another
// process that opens the file during the call waits for its end.
// Fails with
//   2, 3     there is no file any more;
//   5, 19, 123, 206  as DeleteFileW;
//   32       it is open in this or another process, or another process began to open it meanwhile;
//   50       the file system can neither rename without replacing nor link, so that nothing can be deleted safely;
//   87       a null stamp;
//   1006     it isn't the file of the stamp any more, or has changed since;
//   1237     provesWrites is 0: try again with a new copy in some seconds;
//   31       the host failed.
// All but 2, 3, 32, 1006 and 1237 are noted as failures of the device, like those of DeleteFileW.
//
// After a failure the file still has its name and its content. There is one exception: another program replaces the
// file during the deletion and makes a third file at the path microseconds later. Then the third file keeps the path,
// and the second one stays in the folder under the name below.
//
// How: the call takes a lease on the file, renames it within its folder to "NAME (being deleted by Quillbox
// 0123456789abcdef)", compares it again under that name, and deletes it there. So a file that another program puts at
// the path is never deleted. A process that is killed in between leaves the file under that name.
//
// On network folders, on file systems without leases and for files of another user the host gives no lease. The call
// then does all but the lease. It doesn't notice a program that has the file open, and what that program writes in the
// microseconds between the last comparison and the deletion is lost. On a network folder the times are the server's. If
// its clock is slow, `provesWrites` may be nonzero too early.
BOOL DeleteUnchangedFile(const WCHAR* path, const FileStamp* stamp);
