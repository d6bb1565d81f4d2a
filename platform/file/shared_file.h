// shared_file.h - one file of the host, shared by all handles that have it open: its length, and the writes that are
// gathered for it.
//
// Gathering: small writes at the end of the file are collected in memory and written to the host together. The host
// must already have given room for them, so that a write that was reported as done can't fail later for lack of room.
// The room is the rest of the last block of a small file, or space reserved after the end of a larger one. On file
// systems that can't guarantee the room, each write goes to the host at once.
//
// A temporary file that the host doesn't know by a name has its bytes in temporary_content.h until it gets a name or is
// deleted. While they are in memory, nothing is gathered. Once they are in a nameless file of the host, it is written
// like any other file.
//
// Invariants, whenever the lock is free:
// - The host has the first size_ - gathered_ bytes, unless they are in memory, and the gathered bytes come right after
// them.
// - Gathered bytes lie below reservedTo_ or in a block that the host has already.
// - The card's capacity is charged for each byte that this process added, gathered ones included.
// - gatherer_ is an open descriptor for writing, from the first gathered write until release().
// - Once gathered bytes are lost, lost_ has the error, and size_ ends before the first lost byte.
#pragma once

#include "attributes.h"
#include "kernel/mutex.h"
#include "mounted_folder.h"
#include "temporary_content.h"

#include "ce/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

struct Written {
    std::size_t bytes = 0;  // that are part of the file now, on failure too
    DWORD error = 0;
    bool hostIsFull = false;  // the host refused the rest, not the card's capacity
};

class SharedFile {
public:
    SharedFile(MountedFolder& mount, const FileKey& key, std::uint64_t size);

    // A new temporary file. No file of the host has its key.
    SharedFile(MountedFolder& mount, const FileKey& key, std::unique_ptr<TemporaryContent> content);

    // Guards this object and what the file's handles hold.
    kernel::Mutex& mutex() const RETURN_CAPABILITY(mutex_) { return mutex_; }

    MountedFolder& mount() const { return *mount_; }

    // The key in the table of open files. It changes when a temporary file gets a name on the host. The lock of that
    // table guards it, not the one of this file.
    const FileKey& key() const { return key_; }
    void setKey(const FileKey& key) { key_ = key; }

    // Whether it was made as a temporary file. Later it can get a name on the host.
    bool isTemporary() const { return content_ != nullptr; }

    // Whether it has no name on the host.
    bool isNameless() const REQUIRES(mutex_) { return content_ && !content_->isNamed(); }
    bool isInMemory() const REQUIRES(mutex_) { return content_ && content_->isInMemory(); }

    // Of a file in memory: copies bytes from `offset` on, fewer at the end.
    std::size_t readMemory(std::uint64_t offset, std::span<std::byte> out) const REQUIRES(mutex_)
    {
        return content_->read(offset, out, size_);
    }

    // The host's file of a temporary one; -1 while it is in memory.
    int temporaryFile() const REQUIRES(mutex_) { return content_->file(); }

    // Copies a nameless file to `named`, an empty file of the host on that device, which replaces its content. 0 or the
    // error, and then nothing has changed.
    [[nodiscard]] DWORD moveTo(Descriptor named, std::uint64_t device) REQUIRES(mutex_);

    // For a file that nobody uses any more: the memory that it had.
    [[nodiscard]] TemporaryContent::Memory takeMemory() REQUIRES(mutex_) { return content_->takeMemory(); }

    // The length, gathered bytes included.
    std::uint64_t size() const REQUIRES(mutex_) { return size_; }

    // Sets the length to what the host says. Nothing is gathered.
    void setSize(std::uint64_t size) REQUIRES(mutex_) { size_ = size; }

    // Changes whenever bytes of the file change.
    std::uint64_t version() const REQUIRES(mutex_) { return version_; }

    bool hasGathered() const REQUIRES(mutex_) { return gathered_ != 0; }

    // Writes through `descriptor`, within the card's capacity. A temporary file uses its own descriptor.
    [[nodiscard]] Written write(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
        REQUIRES(mutex_);

    // Makes the file `size` bytes long, within the card's capacity; 0 or the error.
    [[nodiscard]] DWORD endAt(int descriptor, std::uint64_t size) REQUIRES(mutex_);

    // Writes the gathered bytes to the host. After a failure, bytes that were reported as written are missing: each
    // later write and writeOut fails with that error, until endAt cuts the file where it is whole.
    [[nodiscard]] DWORD writeOut() REQUIRES(mutex_);

    // Each write to the host is preceded by one of what is gathered for `earlier`. The lock of `earlier` is taken while
    // this one is held. No two threads block each other by that, because `earlier` isn't written after another file at
    // the time of this call, so that there is no cycle. No other thread makes such a call at the same time.
    void writeAfter(std::shared_ptr<SharedFile> earlier) REQUIRES(mutex_) { earlier_ = std::move(earlier); }
    bool isWrittenAfterAnother() const REQUIRES(mutex_) { return earlier_ != nullptr; }

    // Writes out, ends gathering and gives the reserved room after the end back to the host.
    [[nodiscard]] DWORD release() REQUIRES(mutex_);

    // As release() if `descriptor` gathers, otherwise as writeOut(). For a descriptor that is about to be closed.
    [[nodiscard]] DWORD release(int descriptor) REQUIRES(mutex_)
    {
        return descriptor == gatherer_ ? release() : writeOut();
    }

    // Whether any file has reserved room. Giving it back can make room on a full host.
    static bool anyReserves();

    // Whether any file is gathering, so that the host may not have its last bytes.
    static bool anyGathers();

private:
    [[nodiscard]] Written put(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes) REQUIRES(mutex_);
    [[nodiscard]] int spill() REQUIRES(mutex_);
    [[nodiscard]] Written putStraight(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
        REQUIRES(mutex_);
    [[nodiscard]] DWORD writeOutEarlier() REQUIRES(mutex_);
    void loseGathered(std::size_t kept, DWORD error) REQUIRES(mutex_);
    [[nodiscard]] bool canGather(int descriptor, std::uint64_t offset, std::size_t bytes) REQUIRES(mutex_);
    bool fitsLastBlock(int descriptor, std::uint64_t end) const REQUIRES(mutex_);
    [[nodiscard]] bool makeReserve(int descriptor, std::uint64_t end) REQUIRES(mutex_);
    void startGathering(int descriptor) REQUIRES(mutex_);
    void noteChange() REQUIRES(mutex_) { mount_->noteChange(device_); }

    mutable kernel::Mutex mutex_;
    MountedFolder* const mount_;
    FileKey key_;
    const std::unique_ptr<TemporaryContent> content_ PT_GUARDED_BY(mutex_);  // null for any other file
    std::uint64_t device_ GUARDED_BY(mutex_);  // the number of the host's device that holds the file
    std::uint64_t size_ GUARDED_BY(mutex_);
    std::uint64_t version_ GUARDED_BY(mutex_) = 0;
    DWORD lost_ GUARDED_BY(mutex_) = 0;  // the error that lost gathered bytes

    std::shared_ptr<SharedFile> earlier_ GUARDED_BY(mutex_);

    // The end of the latest write to the host, so that the host has a block for the byte before; 0 if not known.
    std::uint64_t writtenTo_ GUARDED_BY(mutex_) = 0;

    std::unique_ptr<std::byte[]> gather_ GUARDED_BY(mutex_);
    std::size_t gathered_ GUARDED_BY(mutex_) = 0;      // bytes in gather_; they end at size_
    int gatherer_ GUARDED_BY(mutex_) = -1;             // the descriptor to write them with; -1: not gathering
    std::uint64_t reservedTo_ GUARDED_BY(mutex_) = 0;  // end of the reserved room; 0 if there is none
    bool reservesNothing_ GUARDED_BY(mutex_) = false;  // the host has refused to reserve
};

}  // namespace platform::file
