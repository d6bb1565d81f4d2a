// shared_file.h - one file of the host that is open here, shared by all handles that stand for it: how long
// it is, who may use it, and the writes that are gathered for it.
//
// Small writes at the end are gathered and handed to the host together, but only in room that the host has already
// given: in a small file the rest of its last block, in a larger one what the host was asked to reserve. So a write
// that was reported as done can't fail for lack of room later. On other hosts each write goes straight through.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

namespace platform::file {

struct Written {
    std::size_t bytes = 0;  // in the file now, on failure too
    DWORD error = 0;
    bool hostIsFull = false;  // the host, not the card's capacity, refused the rest
};

class SharedFile {
public:
    // `device` is the number of the host's device that holds the file.
    SharedFile(std::shared_ptr<MountedFolder> mount, std::uint64_t device, std::uint64_t size);

    // The file's lock. The functions below need it; it also guards what its handles hold.
    [[nodiscard]] std::mutex& mutex() { return mutex_; }

    [[nodiscard]] const MountedFolder& mount() const { return *mount_; }

    // The length, gathered bytes included.
    [[nodiscard]] std::uint64_t size() const { return size_; }

    // What the host says, once everything is written out.
    void setSize(std::uint64_t size) { size_ = size; }

    // Changes whenever bytes of the file change.
    [[nodiscard]] std::uint64_t version() const { return version_; }

    [[nodiscard]] bool hasGathered() const { return gathered_ != 0; }

    // Writes through `descriptor`, within the card's capacity.
    [[nodiscard]] Written write(int descriptor, std::uint64_t place, std::span<const std::byte> bytes);

    // Makes the file end at `size`, within the card's capacity; 0 or the error.
    [[nodiscard]] DWORD endAt(int descriptor, std::uint64_t size);

    // Hands what is gathered to the host. An error, once there is one, is also what each later write and
    // writeOut give, until the file is cut to what it has: bytes that were reported as written are missing.
    [[nodiscard]] DWORD writeOut();

    // Writes out and gives the reserved room behind the end back.
    [[nodiscard]] DWORD release();

    // The same if it is `descriptor` through which bytes are gathered.
    [[nodiscard]] DWORD release(int descriptor) { return descriptor == gatherer_ ? release() : writeOut(); }

    // Has any file reserved room behind its end? Taking it back may make room on a full host.
    [[nodiscard]] static bool anyReserves();

    // Is any file gathering, so that the host may not know of its last bytes?
    [[nodiscard]] static bool anyGathers();

private:
    [[nodiscard]] Written put(int descriptor, std::uint64_t place, std::span<const std::byte> bytes);
    [[nodiscard]] Written putStraight(int descriptor, std::uint64_t place, std::span<const std::byte> bytes);
    [[nodiscard]] bool canGather(int descriptor, std::uint64_t place, std::size_t bytes);
    [[nodiscard]] bool fitsLastBlock(int descriptor, std::uint64_t end) const;
    [[nodiscard]] bool makeReserve(int descriptor, std::uint64_t end);
    void startGathering(int descriptor);
    void noteChange() { mount_->noteChange(device_); }

    std::mutex mutex_;
    std::shared_ptr<MountedFolder> mount_;
    const std::uint64_t device_;
    std::uint64_t size_;
    std::uint64_t writtenTo_ = 0;  // the host has a block for the byte before; 0: not known
    std::uint64_t version_ = 0;
    DWORD lost_ = 0;  // the error that cost gathered bytes

    std::unique_ptr<std::byte[]> gather_;
    std::size_t gathered_ = 0;      // bytes; they end at size_
    int gatherer_ = -1;             // the descriptor that gathers
    std::uint64_t reservedTo_ = 0;  // end of the room that is reserved; 0: none
    bool reservesNothing_ = false;  // the host refused once
};

}  // namespace platform::file
