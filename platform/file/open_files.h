// open_files.h - which files are open here, and in which sharing. The one lock for both is in this table;
// whoever needs it together with a file's own lock takes the table's first.
#pragma once

#include "attributes.h"
#include "declared_temporary.h"
#include "host_calls.h"
#include "shared_file.h"
#include "temporary_file.h"

#include "ce/types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace platform::file {

// What a handle asks for and what it allows others; GENERIC_* and FILE_SHARE_* bits. Access 0 asks for
// nothing and forbids nothing.
struct Sharing {
    DWORD access = 0;
    DWORD share = 0;
};

class OpenFiles {
public:
    // The table of this process. Whoever holds open files keeps it alive.
    [[nodiscard]] static std::shared_ptr<OpenFiles> instance();

    // Held from opening a file until it is entered: otherwise two threads could each find the other's
    // descriptor and take it for another process.
    [[nodiscard]] std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }

    // These three need the lock.
    [[nodiscard]] bool isOpen(const FileKey& key) const { return files_.contains(key); }
    [[nodiscard]] bool conflicts(const FileKey& key, const Sharing& sharing) const;
    [[nodiscard]] std::shared_ptr<SharedFile> enter(const FileKey& key, const Sharing& sharing,
                                                    const std::shared_ptr<MountedFolder>& mount, std::uint64_t size);

    // Files that were made here lately count as nobody else's: programs that look into each new file for a
    // moment (indexers, scanners) must not make it look in use when it is opened again. Both need the lock.
    void noteMade(const HostStatus& status);
    [[nodiscard]] bool wasMadeHere(const HostStatus& status) const;

    // Needs the lock.
    [[nodiscard]] TemporaryFile& temporary() { return temporary_; }
    [[nodiscard]] DeclaredTemporary& declaredTemporary() { return declared_; }

    // These take it.
    void keepTemporary(const HostPlace& place, const FileKey& key, Descriptor descriptor);
    void forgetTemporary();
    void leave(const FileKey& key, const Sharing& sharing);

    // The length of a file that is open for writing here, where the host may not know of the last bytes.
    [[nodiscard]] std::optional<std::uint64_t> sizeOfWritten(const FileKey& key);

    // Writes out and gives back what any file has reserved, for a host that is full. No file's lock may be
    // held.
    void releaseReserves();

    // Writes out what is gathered of a mounted folder's files; 0 or the first error. The same goes for the locks.
    [[nodiscard]] DWORD writeOutAll(const MountedFolder& mount);

private:
    struct KeyHash {
        std::size_t operator()(const FileKey& key) const noexcept
        {
            return static_cast<std::size_t>((key.inode ^ (key.device << 7)) * 0x9E3779B97F4A7C15);
        }
    };

    struct Entry {
        std::shared_ptr<SharedFile> file;
        int handles = 0;
        int readers = 0;
        int writers = 0;
        int forbidReading = 0;
        int forbidWriting = 0;

        void count(const Sharing& sharing, int step);
    };

    [[nodiscard]] std::vector<std::shared_ptr<SharedFile>> everyFile();

    std::mutex mutex_;
    std::unordered_map<FileKey, Entry, KeyHash> files_;
    // With its object id, since an inode soon serves again.
    struct MadeFile {
        FileKey key;
        DWORD objectId = 0;

        bool operator==(const MadeFile&) const = default;
    };

    std::array<MadeFile, 8> made_;
    std::size_t nextMade_ = 0;
    TemporaryFile temporary_;
    DeclaredTemporary declared_;
};

}  // namespace platform::file
