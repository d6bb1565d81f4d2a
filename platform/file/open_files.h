// open_files.h - keeps the table of the files that this process has open. For each file, the table has the number of
// handles, and how many of them read, write, forbid reading and forbid writing.
//
// The table has two locks, and each file has a lock of its own. A thread that needs several of these locks takes them
// in this order: `openings`, `mutex`, the lock of a file. A thread holds the locks of two files at the same time only
// if SharedFile::writeAfter has set an earlier file for one of them. It then takes the lock of the earlier file last.
//
// - A thread that opens a file takes `openings` in shared mode before the system call that opens the file. It releases
//   the lock when the file is in the table or closed again. So two threads can open the same file at the same time.
//   While one of them has a descriptor that isn't in the table yet, or holds a lease for a moment, the host (the Linux
//   system) can refuse the other thread's lease or open call as if another process used the file. After such a refusal,
//   the other thread closes the file and takes `openings` exclusively, so that no other opening is in progress. Then it
//   opens the file again. Calls that delete or move a file hold `openings` exclusively, too.
// - `mutex` guards the table. It is held only while the table is read or changed. Under `mutex`, system calls are made
//   only for temporary files: to find out whether a file exists at a path that the program declares
//   (DeclareTemporaryFile), to give a temporary file its name on the host, and to set the extended attribute of a
//   temporary file or of the root folder.
#pragma once

#include "attributes.h"
#include "host_calls.h"
#include "kernel/mutex.h"
#include "shared_file.h"
#include "temporary_files.h"

#include "ce/types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace platform::file {

// The access of a handle and the access that it allows to other handles, as GENERIC_* and FILE_SHARE_* bits. A handle
// with access 0 can neither read nor write, and forbids nothing.
struct Sharing {
    DWORD access = 0;
    DWORD share = 0;
};

class OpenFiles {
public:
    // The table of this process, which lives until the process ends.
    static OpenFiles& instance();

    kernel::SharedMutex& openings() const RETURN_CAPABILITY(openings_) { return openings_; }
    kernel::Mutex& mutex() const RETURN_CAPABILITY(mutex_) { return mutex_; }

    bool isOpen(const FileKey& key) const REQUIRES(mutex_) { return find(key) != nullptr; }
    bool conflicts(const FileKey& key, const Sharing& sharing) const REQUIRES(mutex_);

    // Adds a handle of the file. `size` is the length of the file; it is used only if the file wasn't open.
    [[nodiscard]] std::shared_ptr<SharedFile> enter(const FileKey& key, const Sharing& sharing, MountedFolder& mount,
                                                    std::uint64_t size) REQUIRES(mutex_);

    // Adds a handle of a temporary file.
    void enter(const std::shared_ptr<SharedFile>& temporary, const Sharing& sharing) REQUIRES(mutex_);

    // Remembers a file that this process has just made, until it has made eight more files. When the process opens a
    // remembered file again, it doesn't ask the host whether another process uses the file. Otherwise an indexer or
    // scanner, which opens each new file for a moment, could make that opening fail.
    void noteMade(const HostStatus& status) REQUIRES(mutex_);
    bool wasMadeHere(const HostStatus& status) const REQUIRES(mutex_);

    TemporaryFiles& temporaries() REQUIRES(mutex_) { return temporaries_; }

    // Each of these functions gives unnamed temporary files (temporary_files.h) their names on the host. nameOnHost
    // does this for the given file, nameOnTheWayTo for the files at `path` and at its parent paths, nameInFolder for
    // the files in a folder, and nameAll for all files. Each returns 0 or the error. If an entry of another program
    // already has the name of a file, nameOnHost fails. The other three functions leave that file unnamed.
    [[nodiscard]] DWORD nameOnHost(const SharedFile& file) EXCLUDES(mutex_);
    [[nodiscard]] DWORD nameOnTheWayTo(const HostPath& path) REQUIRES(mutex_);
    [[nodiscard]] DWORD nameInFolder(const HostPath& folder) EXCLUDES(mutex_);
    [[nodiscard]] DWORD nameAll() EXCLUDES(mutex_);

    // Ends the declaration of a path as temporary (DeclareTemporaryFile). If an unnamed temporary file is at the path,
    // the call first gives the file its name on the host. Returns 0 or the error. After an error the declaration
    // remains.
    [[nodiscard]] DWORD withdrawTemporary(const HostPath& path) REQUIRES(mutex_);

    // Removes a handle that enter() has added.
    void leave(const SharedFile& file, const Sharing& sharing) EXCLUDES(mutex_);

    // If this process has the file open for writing, and may have buffered bytes of it (shared_file.h), returns the
    // length of the file including these bytes. Otherwise empty.
    std::optional<std::uint64_t> sizeOfWritten(const FileKey& key) EXCLUDES(mutex_);

    // Writes out the buffered bytes of all files, and frees the disk space that is reserved for the files. Call it when
    // the host's disk is full. The caller holds no file's lock.
    void releaseReserves() EXCLUDES(mutex_);

    // Writes out the buffered bytes of all files of a mounted folder. Returns 0 or the first error. The caller holds no
    // file's lock.
    [[nodiscard]] DWORD writeOutAll(const MountedFolder& mount) EXCLUDES(mutex_);

private:
    struct Entry {
        FileKey key;
        std::shared_ptr<SharedFile> file;
        int handles = 0;
        int readers = 0;
        int writers = 0;
        int forbidReading = 0;
        int forbidWriting = 0;

        void count(const Sharing& sharing, int step);
    };

    // The object id is included, because a later file can get the same inode number.
    struct MadeFile {
        FileKey key;
        DWORD objectId = 0;

        bool operator==(const MadeFile&) const = default;
    };

    // Null if the file isn't open.
    const Entry* find(const FileKey& key) const REQUIRES(mutex_);
    Entry* find(const FileKey& key) REQUIRES(mutex_);
    Entry& findOrAdd(const FileKey& key) REQUIRES(mutex_);

    std::vector<std::shared_ptr<SharedFile>> everyFile() EXCLUDES(mutex_);
    [[nodiscard]] DWORD giveName(const TemporaryFiles::Nameless& nameless) REQUIRES(mutex_);
    [[nodiscard]] DWORD giveNames(const std::vector<TemporaryFiles::Nameless>& nameless) REQUIRES(mutex_);
    void changeKey(SharedFile& file, const FileKey& key) REQUIRES(mutex_);

    mutable kernel::SharedMutex openings_;
    mutable kernel::Mutex mutex_;
    // A backup or restore has fewer than ten files open, so a linear search is fastest.
    std::vector<Entry> files_ GUARDED_BY(mutex_);
    std::array<MadeFile, 8> made_ GUARDED_BY(mutex_);
    std::size_t nextMade_ GUARDED_BY(mutex_) = 0;
    TemporaryFiles temporaries_ GUARDED_BY(mutex_);
};

}  // namespace platform::file
