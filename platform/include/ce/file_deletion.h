// ce/file_deletion.h - deleting a file only if it is still the one that was read.
//
// A program that moves content elsewhere stamps the open file before it reads, and deletes it by that stamp when its
// copy is safe. Whatever another program does meanwhile, content that came after the stamp isn't deleted.
#pragma once

#include "ce/types.h"

// What an open file was at one moment. Plain: it may be copied and kept while other files are handled.
struct FileStamp {
    std::uint64_t device;  // which file
    std::uint64_t inode;
    std::uint64_t length;        // in bytes
    std::int64_t writeSeconds;   // when its content was written last
    std::int64_t changeSeconds;  // when anything of it changed last, its names and rights too
    std::uint32_t writeNanoseconds;
    std::uint32_t changeNanoseconds;
    // Would each later write show in the times? Not if the file was written a moment before the stamp was taken: a
    // second write could leave the same time. A moment is 50 ms. Where the time of change has no fraction of a second,
    // since some file systems count in steps of one or two seconds, both times must lie 4 seconds back. A time in the
    // future proves nothing either.
    BOOL provesWrites;
};

// Nonzero on success. What was written here is handed to the host first, so that the stamp includes it. Take the stamp
// at once after an opening that shares nothing and before the first read: then each change of what is read shows, even
// one by a program that maps the file into its memory, which changes the times at its first write alone.
// 0 on failure: 6 for a handle that is no open file, 31, 87 for a null stamp, and the errors of WriteFile.
BOOL GetFileStamp(HANDLE file, FileStamp* stamp);

// Deletes the file at `path` if it is exactly what the stamp says and nobody has it open: no handle of this process,
// no other process. For the time of the call others wait when they open it.
// Fails with
//   2, 3     nothing stands there any more;
//   5, 19, 123, 206  as DeleteFileW;
//   32       it is open here or elsewhere, or somebody began to open it meanwhile;
//   50       the file system can neither rename without replacing nor link, so that nothing can be deleted safely;
//   87       a null stamp;
//   1006     it isn't the file of the stamp any more, or has changed since;
//   1237     the stamp doesn't prove anything (provesWrites): try again with a new copy in some seconds;
//   31       the host failed.
// All but 2, 3, 32, 1006 and 1237 count as trouble of the device, as those of DeleteFileW do; these are for the caller.
//
// After a failure the file is there, under its own name, with its content. One case is different: another program
// replaced the file in the very moment of the deletion and made a third one at the path microseconds later. Then the
// third one keeps the path, and the second stays beside it under the name below.
//
// How: the file is held by a lease, renamed within its folder to "NAME (being deleted by Quillbox 0123456789abcdef)",
// compared again under that name, and deleted there; so what another program puts at the path is never deleted. A
// process that is killed in between leaves the file under that name.
//
// Where the host gives no lease for other reasons than use (network folders, file systems without leases, files of
// another user), all but the lease is done: then a program that has the file open isn't seen, and what it writes
// between the last comparison and the deletion, some microseconds, is lost. On a network folder the times are the
// server's: where its clock is behind, `provesWrites` may be nonzero too early.
BOOL DeleteUnchangedFile(const WCHAR* path, const FileStamp* stamp);
