// shared_file.h - represents one file of the host (the Linux system), shared by all handles that have it open. Keeps
// the length of the file, and buffers writes to it.
//
// Buffering: small writes at the end of the file are collected in memory ("gathered" in the names below) and written to
// the host together. A write is buffered only if the host has already allocated disk space for its bytes. Otherwise a
// write that was reported as done could fail later because the disk is full. In a small file, the allocated space is
// the rest of the last block. In a larger file, it is space that was reserved after the end. On file systems that can't
// guarantee the space, each write goes to the host at once.
//
// The bytes of a temporary file are in a TemporaryContent, either in memory or in a file of the host. While they are in
// memory, no writes are buffered. Once they are in a file of the host, that file is written like any other file.
//
// The program can make a file *unfinished*, in order to recognise it after the process was killed (ce/file.h,
// MarkUnfinished). On the host, a zero byte, the mark, then follows the last byte of the file. Each write at the end of
// the file writes the mark too, in the same call of the host. size_ doesn't count the mark.
//
// Invariants, whenever the lock is free:
// - The first size_ - gathered_ bytes of the file are on the host. Only a temporary file can be wholly in memory
//   instead. The buffered bytes come right after the bytes on the host.
// - Buffered bytes lie below reservedTo_ or in a block that the host has already allocated.
// - Each byte that this process added to the file, buffered or not, is subtracted from the free capacity of the mounted
//   folder (MountedFolder::takeRoom).
// - gatherer_ is an open descriptor for writing, from startGathering() until release().
// - From the loss of buffered bytes until endAt succeeds, lost_ has the error, and size_ is the offset of the first
//   lost byte.
#pragma once

#include "attributes.h"
#include "kernel/mutex.h"
#include "mounted_folder.h"
#include "temporary_content.h"

#include "ce/types.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

struct Written {
    std::size_t bytes = 0;  // the number of bytes written, also after a failure
    DWORD error = 0;
    bool hostIsFull = false;  // the rest failed because the disk is full, not because of the folder's capacity
};

class SharedFile {
public:
    SharedFile(MountedFolder& mount, const FileKey& key, std::uint64_t size);

    // For a new temporary file. `key` must not be the key of a file on the host.
    SharedFile(MountedFolder& mount, const FileKey& key, std::unique_ptr<TemporaryContent> content);

    // Guards this object and the state of the file's handles (OpenFile).
    kernel::Mutex& mutex() const RETURN_CAPABILITY(mutex_) { return mutex_; }

    MountedFolder& mount() const { return *mount_; }

    // The key in the table of open files. The key changes when a temporary file gets a name on the host. It is guarded
    // by the lock of the table, and not by the lock of this file.
    const FileKey& key() const { return key_; }
    void setKey(const FileKey& key) { key_ = key; }

    // Whether this file was made as a temporary file. The result stays true after the file gets a name on the host.
    bool isTemporary() const { return content_ != nullptr; }

    // Whether this file is a temporary file without a directory entry on the host (temporary_files.h).
    bool isNameless() const REQUIRES(mutex_) { return content_ && !content_->isNamed(); }
    bool isInMemory() const REQUIRES(mutex_) { return content_ && content_->isInMemory(); }

    // For a file in memory: copies bytes from `offset`, and returns how many. At the end of the file these are fewer
    // than `out` can take.
    std::size_t readMemory(std::uint64_t offset, std::span<std::byte> out) const REQUIRES(mutex_)
    {
        return content_->read(offset, out, size_);
    }

    // The descriptor of a temporary file on the host; -1 while its bytes are in memory.
    int temporaryFile() const REQUIRES(mutex_) { return content_->file(); }

    // Copies an unnamed temporary file to `named`, an empty file of the host whose st_dev is `device`. From then on,
    // this object reads and writes `named`. Returns 0 or the error. After an error this object still uses the old copy
    // of the bytes.
    [[nodiscard]] DWORD moveTo(Descriptor named, std::uint64_t device) REQUIRES(mutex_);

    // Takes the memory of a temporary file that was deleted, so that the next temporary file can use it.
    [[nodiscard]] TemporaryContent::Memory takeMemory() REQUIRES(mutex_) { return content_->takeMemory(); }

    // The length of the file, including the buffered bytes.
    std::uint64_t size() const REQUIRES(mutex_) { return size_; }

    // Sets the length to `size`, which the host has reported. Call it only while no bytes are buffered.
    void setSize(std::uint64_t size) REQUIRES(mutex_) { size_ = size; }

    // A number that changes whenever this process changes bytes or the length of the file.
    std::uint64_t version() const REQUIRES(mutex_) { return version_; }

    bool hasGathered() const REQUIRES(mutex_) { return gathered_ != 0; }

    // Writes `bytes` at `offset` through `descriptor`, as far as the capacity of the mounted folder allows. A temporary
    // file has a descriptor of its own, which is used instead of `descriptor`.
    [[nodiscard]] Written write(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
        REQUIRES(mutex_);

    // Sets the length of the file to `size`. Returns 0 or the error. If the free capacity of the mounted folder is less
    // than the growth, the call fails and the length stays.
    [[nodiscard]] DWORD endAt(int descriptor, std::uint64_t size) REQUIRES(mutex_);

    // Writes the buffered bytes to the host. If this fails, bytes are missing that were reported as written. Each later
    // write and writeOut then fails with the same error, until endAt sets the length to at most the offset of the first
    // missing byte.
    [[nodiscard]] DWORD writeOut() REQUIRES(mutex_);

    // From now on, before bytes of this file are written to the host, the buffered bytes of `earlier` are written. The
    // lock of `earlier` is then taken while the lock of this file is held. This could deadlock if `earlier` in turn
    // were written after this file, directly or by way of other files. To rule that out, the caller makes sure that
    // writeAfter was never called on `earlier`, and that no other thread calls writeAfter at the same time.
    void writeAfter(std::shared_ptr<SharedFile> earlier) REQUIRES(mutex_) { earlier_ = std::move(earlier); }
    bool isWrittenAfterAnother() const REQUIRES(mutex_) { return earlier_ != nullptr; }

    // Begin and end the state "unfinished". markFinished returns 0 or the error. After an error, the file is still
    // unfinished.
    void markUnfinished() REQUIRES(mutex_) { unfinished_ = true; }
    bool isUnfinished() const REQUIRES(mutex_) { return unfinished_; }
    [[nodiscard]] DWORD markFinished(int descriptor) REQUIRES(mutex_);

    // Notes that only the first bytes of a write got into the file, up to `offset`. The file then gets no mark at this
    // offset or after it, until endAt. Otherwise the mark could be taken for the next byte of the write.
    void noteCut(std::uint64_t offset) REQUIRES(mutex_) { cutAt_ = std::min(cutAt_, offset); }

    // Writes out the buffered bytes, ends buffering and gives the reserved space after the end back to the host.
    [[nodiscard]] DWORD release() REQUIRES(mutex_);

    // Calls release() if `descriptor` is the one that will write the buffered bytes, otherwise writeOut(). Call this
    // function before `descriptor` is closed.
    [[nodiscard]] DWORD release(int descriptor) REQUIRES(mutex_)
    {
        return descriptor == gatherer_ ? release() : writeOut();
    }

    // Whether any file has reserved space. If the disk is full and this space is given back, other writes can succeed.
    static bool anyReserves();

    // Whether writes to any file are being buffered (from startGathering until release). The host may lack the last
    // bytes of such a file.
    static bool anyGathers();

private:
    [[nodiscard]] Written put(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes) REQUIRES(mutex_);
    [[nodiscard]] int spill() REQUIRES(mutex_);
    [[nodiscard]] Written putStraight(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
        REQUIRES(mutex_);
    [[nodiscard]] DWORD writeOutEarlier() REQUIRES(mutex_);
    std::span<const std::byte> markAfter(std::uint64_t end) const REQUIRES(mutex_);
    void loseGathered(std::size_t kept, DWORD error) REQUIRES(mutex_);
    [[nodiscard]] bool canGather(int descriptor, std::uint64_t offset, std::size_t bytes) REQUIRES(mutex_);
    bool fitsLastBlock(int descriptor, std::uint64_t end) const REQUIRES(mutex_);
    [[nodiscard]] bool makeReserve(int descriptor, std::uint64_t end) REQUIRES(mutex_);
    void startGathering(int descriptor) REQUIRES(mutex_);
    void noteChange() REQUIRES(mutex_) { mount_->noteChange(device_); }

    mutable kernel::Mutex mutex_;
    MountedFolder* const mount_;
    FileKey key_;
    const std::unique_ptr<TemporaryContent> content_ PT_GUARDED_BY(mutex_);  // null unless temporary
    std::uint64_t device_ GUARDED_BY(mutex_);  // st_dev of the host's file system that holds the file
    std::uint64_t size_ GUARDED_BY(mutex_);
    std::uint64_t version_ GUARDED_BY(mutex_) = 0;
    DWORD lost_ GUARDED_BY(mutex_) = 0;  // the error by which buffered bytes were lost; 0: none are lost

    std::shared_ptr<SharedFile> earlier_ GUARDED_BY(mutex_);
    bool unfinished_ GUARDED_BY(mutex_) = false;
    static constexpr std::uint64_t NoCut = ~std::uint64_t{0};
    std::uint64_t cutAt_ GUARDED_BY(mutex_) = NoCut;  // the first offset at which noteCut forbids the mark

    // If not 0, the host has allocated a block for the byte before this offset. After a write to the host this is the
    // end offset of the write. moveTo and spill set it to size_. endAt sets it to 0.
    std::uint64_t writtenTo_ GUARDED_BY(mutex_) = 0;

    std::unique_ptr<std::byte[]> gather_ GUARDED_BY(mutex_);
    std::size_t gathered_ GUARDED_BY(mutex_) = 0;      // buffered bytes in gather_; they end at size_
    int gatherer_ GUARDED_BY(mutex_) = -1;             // the descriptor to write them with; -1: not buffering
    std::uint64_t reservedTo_ GUARDED_BY(mutex_) = 0;  // end of the reserved space; 0 if there is none
    bool reservesNothing_ GUARDED_BY(mutex_) = false;  // the host has refused to reserve
};

}  // namespace platform::file
