// open_files.h - the table of the files that this process has open, with what their handles allow each other.
//
// Two locks, besides that of each file, which is taken last. The lock of a file that is written after another one comes
// before that one's (SharedFile::writeAfter). A thread that needs several takes them in this order:
//
// - `openings` is held shared from the host's opening of a file until the file is entered or closed again. Two threads
//   can open files at the same time. If the host says then that a file is in use, the reason can be the other thread's
//   descriptor of the same file, which isn't in the table yet, or the lease that it has taken for a moment. So such an
//   opening closes the file and is made again while it holds the lock alone, when no other opening is underway. Calls
//   that delete or move a file hold it alone too.
// - `mutex` guards the table. It is held only while the table is read or changed, and over calls on the host only to
//   give a temporary file its name, and to mark the root folder.
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

// What a handle asks for and what it allows others; GENERIC_* and FILE_SHARE_* bits. Access 0 asks for nothing and
// forbids nothing.
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

    // Counts a handle. `size` is used if the file wasn't open.
    [[nodiscard]] std::shared_ptr<SharedFile> enter(const FileKey& key, const Sharing& sharing, MountedFolder& mount,
                                                    std::uint64_t size) REQUIRES(mutex_);

    // Counts a handle of a temporary file.
    void enter(const std::shared_ptr<SharedFile>& temporary, const Sharing& sharing) REQUIRES(mutex_);

    // Remembers a file that was just made. Only this process is expected to use it: programs that open each new file
    // for a moment (indexers, scanners) must not make it look in use when it is opened again.
    void noteMade(const HostStatus& status) REQUIRES(mutex_);
    bool wasMadeHere(const HostStatus& status) const REQUIRES(mutex_);

    TemporaryFiles& temporaries() REQUIRES(mutex_) { return temporaries_; }

    // Give temporary files their names on the host: the given file, those that a call on `path` concerns, those in a
    // folder, or all. 0 or the error. Another program's entry of the same name is an error only for the given file.
    [[nodiscard]] DWORD nameOnHost(const SharedFile& file) EXCLUDES(mutex_);
    [[nodiscard]] DWORD nameOnTheWayTo(const HostPath& path) REQUIRES(mutex_);
    [[nodiscard]] DWORD nameInFolder(const HostPath& folder) EXCLUDES(mutex_);
    [[nodiscard]] DWORD nameAll() EXCLUDES(mutex_);

    // Ends the declaration of a path, unless a file there can't be given its name. 0 or the error.
    [[nodiscard]] DWORD withdrawTemporary(const HostPath& path) REQUIRES(mutex_);

    // Takes back what enter() counted.
    void leave(const SharedFile& file, const Sharing& sharing) EXCLUDES(mutex_);

    // The length of a file that is open for writing here; the host may not have its last bytes yet. Otherwise empty.
    std::optional<std::uint64_t> sizeOfWritten(const FileKey& key) EXCLUDES(mutex_);

    // Writes out and gives back what all files have reserved, because the host is full. The caller holds no file's
    // lock.
    void releaseReserves() EXCLUDES(mutex_);

    // Writes out what is gathered for the files of a mounted folder; 0 or the first error. The caller holds no file's
    // lock.
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

    // With its object id, since a later file can get the inode number.
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
    // A run has fewer than ten files open, so a search from the start is fastest.
    std::vector<Entry> files_ GUARDED_BY(mutex_);
    std::array<MadeFile, 8> made_ GUARDED_BY(mutex_);
    std::size_t nextMade_ GUARDED_BY(mutex_) = 0;
    TemporaryFiles temporaries_ GUARDED_BY(mutex_);
};

}  // namespace platform::file
