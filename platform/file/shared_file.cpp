#include "shared_file.h"

#include "file_system.h"
#include "host/error.h"

#include "ce/error.h"

#include <linux/magic.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>

namespace platform::file {

using host::ioError;

namespace {

constexpr std::size_t GatherBytes = 65536;

// Longer writes aren't buffered. Buffering saves calls on the host, but copying so many bytes would take longer than
// these calls.
constexpr std::size_t GatheredPiece = 8192;

// Buffering begins at this offset. A file system may keep the first bytes of a file in its inode, without a block. As
// long as the file has no block, no space is guaranteed for the next bytes.
constexpr std::uint64_t GatherFrom = 1024;

// Below this offset, no space is reserved. In a small file, reserving space would take more time than the buffering
// would save. Bytes below this offset are buffered only if they fit into the last block that the host has allocated for
// the file.
constexpr std::uint64_t ReserveFrom = 32768;

// Within these limits, a quarter of the file's length is reserved. The reserve grows with the file so that a short file
// has little unused space to give back.
constexpr std::uint64_t ReserveLeast = 131072;
constexpr std::uint64_t ReserveMost = 4194304;

// File systems on which buffered bytes can be written later even if the disk is full by then. On these file systems,
// bytes in an allocated block need no new space, other files can't use up reserved space, and setting a file to its
// present size frees its reserved space. btrfs isn't in the list, because it writes each block to a new location and
// doesn't free the reserved space. ZFS isn't in the list either, because it only checks that there is space.
constexpr std::array<std::uint64_t, 3> ReservingFileSystems = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC};

std::atomic<int> reserves = 0;
std::atomic<int> gatherers = 0;

// Returns the block size of the file system. Returns nothing if the file system isn't in the list above, or if its
// block size is unknown.
std::optional<std::uint64_t> blocksOf(int file, std::uint64_t device)
{
    const std::optional<FileSystem> system = fileSystemOf(file, device);
    if (!system || system->blockBytes == 0 ||
        std::ranges::find(ReservingFileSystems, system->kind) == ReservingFileSystems.end())
        return std::nullopt;
    return system->blockBytes;
}

iovec vectorOf(std::span<const std::byte> bytes)
{
    return {const_cast<std::byte*>(bytes.data()), bytes.size()};
}

// What writeParts wrote. The error is a negative errno; 0 if all was written.
struct HostWrite {
    std::size_t bytes = 0;
    long error = 0;
};

// The byte after the end of an unfinished file.
constexpr std::byte Mark{0};

using Parts = std::array<std::span<const std::byte>, 3>;

// Writes the parts one after the other, until the host refuses.
HostWrite writeParts(int descriptor, std::uint64_t offset, Parts parts)
{
    HostWrite done;
    for (;;) {
        // An empty part isn't passed, because a write of one part costs less than a write of several.
        std::array<iovec, std::tuple_size_v<Parts>> rest;
        std::size_t used = 0;
        for (const auto& part : parts) {
            if (!part.empty())
                rest[used++] = vectorOf(part);
        }
        if (used == 0)
            return done;
        const ssize_t taken = writeAt(descriptor, std::span(rest).first(used), offset + done.bytes);
        if (taken <= 0) {
            done.error = taken < 0 ? taken : -ENOSPC;
            return done;
        }
        done.bytes += static_cast<std::size_t>(taken);
        auto left = static_cast<std::size_t>(taken);
        for (auto& part : parts) {
            const std::size_t written = std::min(left, part.size());
            part = part.subspan(written);
            left -= written;
        }
    }
}

bool isFull(long error)
{
    return ioError(error) == ERROR_DISK_FULL;
}

// Writes the parts and then, if `mark` isn't empty, the mark. A failure to write the mark isn't an error. If the disk
// is full and the mark would be in a new block, the host can refuse also the bytes before it. So these bytes are then
// written without the mark.
HostWrite writeMarked(int descriptor, std::uint64_t offset, std::span<const std::byte> first,
                      std::span<const std::byte> second, std::span<const std::byte> mark)
{
    HostWrite done = writeParts(descriptor, offset, {first, second, mark});
    const std::size_t wanted = first.size() + second.size();
    if (done.bytes < wanted && !mark.empty() && isFull(done.error)) {
        const std::size_t ofFirst = std::min(done.bytes, first.size());
        const HostWrite rest =
            writeParts(descriptor, offset + done.bytes, {first.subspan(ofFirst), second.subspan(done.bytes - ofFirst)});
        done = {done.bytes + rest.bytes, rest.error};
    }
    return done.bytes >= wanted ? HostWrite{wanted, 0} : done;
}

}  // namespace

SharedFile::SharedFile(MountedFolder& mount, const FileKey& key, std::uint64_t size)
    : mount_(&mount), key_(key), device_(key.device), size_(size)
{
}

SharedFile::SharedFile(MountedFolder& mount, const FileKey& key, std::unique_ptr<TemporaryContent> content)
    : mount_(&mount), key_(key), content_(std::move(content)), device_(key.device), size_(0)
{
}

DWORD SharedFile::moveTo(Descriptor named, std::uint64_t device)
{
    if (const DWORD error = release(); error != 0)
        return error;
    const int result = content_->copyTo(named.get(), size_);
    if (result < 0)
        return ioError(result);
    content_->replaceBy(std::move(named));
    device_ = device;
    writtenTo_ = size_;
    reservesNothing_ = false;
    ++version_;
    noteChange();
    return 0;
}

Written SharedFile::write(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
{
    if (lost_ != 0)
        return {0, lost_};
    if (mount_->isGone())
        return {0, ERROR_NOT_READY};
    const std::uint64_t end = offset + bytes.size();
    const std::uint64_t growth = end > size_ ? end - size_ : 0;
    const std::uint64_t room = mount_->takeRoom(growth);
    std::span<const std::byte> fitting = bytes;
    if (room < growth) {
        const std::uint64_t fullAt = size_ + room;
        fitting = bytes.first(fullAt > offset ? static_cast<std::size_t>(fullAt - offset) : 0);
        if (!fitting.empty())
            noteCut(fullAt);
    }
    Written written = put(descriptor, offset, fitting);

    const std::uint64_t newSize = written.bytes != 0 ? std::max(size_, offset + written.bytes) : size_;
    if (newSize - size_ < room)
        mount_->giveBackRoom(room - (newSize - size_));
    size_ = newSize;
    ++version_;
    if (written.error == 0 && written.bytes < bytes.size())
        written.error = ERROR_DISK_FULL;
    return written;
}

// Moves the bytes of a file from memory to an unnamed file (see temporary_content.h).
int SharedFile::spill()
{
    HostStatus status = {};
    if (const int result = content_->spill(size_, status); result < 0)
        return result;
    device_ = deviceOf(status);
    writtenTo_ = size_;
    return 0;
}

DWORD SharedFile::endAt(int descriptor, std::uint64_t size)
{
    if (mount_->isGone())
        return ERROR_NOT_READY;
    // release() fails if buffered bytes are lost. The lost bytes begin at size_ (see loseGathered). If the new size is
    // at most size_, the file doesn't need them, so the error is ignored.
    if (const DWORD error = release(); error != 0 && size > size_)
        return error;
    const std::uint64_t growth = size > size_ ? size - size_ : 0;
    const std::uint64_t room = mount_->takeRoom(growth);
    const std::uint64_t mark = unfinished_ ? 1 : 0;
    int result = room < growth ? -ENOSPC : file::setSize(descriptor, size + mark);
    if (room >= growth && mark != 0 && isFull(result))
        result = file::setSize(descriptor, size);
    else if (result >= 0 && mark != 0)  // the byte after the new end can be an old byte of the file
        (void)writeParts(descriptor, size, {std::span(&Mark, 1)});
    noteChange();
    if (result < 0) {
        mount_->giveBackRoom(room);
        return ioError(result);
    }
    mount_->giveBackRoom(size_ > size ? size_ - size : 0);
    size_ = size;
    lost_ = 0;
    cutAt_ = NoCut;
    writtenTo_ = 0;  // the new end can be in a hole, where the host has no block
    ++version_;
    return 0;
}

DWORD SharedFile::markFinished(int descriptor)
{
    if (!unfinished_)
        return 0;
    if (const DWORD error = release(); error != 0)
        return error;
    unfinished_ = false;
    const DWORD error = endAt(descriptor, size_);  // its only call of the host removes the mark
    unfinished_ = error != 0;
    return error;
}

// Returns the mark if a write that ends at `end` must write the mark too.
std::span<const std::byte> SharedFile::markAfter(std::uint64_t end) const
{
    const bool marks = unfinished_ && end >= size_ && end < cutAt_;
    return std::span(&Mark, marks ? 1 : 0);
}

DWORD SharedFile::writeOut()
{
    if (gathered_ == 0)
        return lost_;
    if (const DWORD error = writeOutEarlier(); error != 0) {
        loseGathered(0, error);
        return lost_;
    }
    const std::uint64_t offset = size_ - gathered_;
    const HostWrite done = mount_->isGone()
                               ? HostWrite{0, -ENOMEDIUM}
                               : writeMarked(gatherer_, offset, {gather_.get(), gathered_}, {}, markAfter(size_));
    noteChange();
    if (done.bytes != 0)
        writtenTo_ = offset + done.bytes;
    if (done.error != 0)
        loseGathered(done.bytes, ioError(done.error));
    gathered_ = 0;
    return lost_;
}

DWORD SharedFile::writeOutEarlier()
{
    if (!earlier_)
        return 0;
    const kernel::MutexLock lock(earlier_->mutex());
    return earlier_->writeOut();
}

DWORD SharedFile::release()
{
    const DWORD error = writeOut();
    if (reservedTo_ != 0) {
        // Setting a file to its present size frees the reserved space after its end. If this fails, no bytes are lost,
        // but the space stays reserved.
        if (reservedTo_ > size_ || reservesNothing_)
            (void)file::setSize(gatherer_, size_ + markAfter(size_).size());
        reservedTo_ = 0;
        --reserves;
    }
    if (gatherer_ != -1)
        --gatherers;
    gatherer_ = -1;
    return error;
}

bool SharedFile::anyReserves()
{
    return reserves.load() != 0;
}

bool SharedFile::anyGathers()
{
    return gatherers.load() != 0;
}

Written SharedFile::put(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
{
    if (bytes.empty())
        return {};
    if (isInMemory()) {
        if (content_->takes(offset, bytes.size(), size_)) {
            content_->put(offset, bytes);
            return {bytes.size(), 0};
        }
        if (const DWORD error = ioError(spill()); error != 0)
            return {0, error, error == ERROR_DISK_FULL};
    }
    if (content_)
        descriptor = content_->file();
    if (!canGather(descriptor, offset, bytes.size()))
        return putStraight(descriptor, offset, bytes);
    if (gathered_ + bytes.size() > GatherBytes) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    std::memcpy(gather_.get() + gathered_, bytes.data(), bytes.size());
    gathered_ += bytes.size();
    return {bytes.size(), 0};
}

Written SharedFile::putStraight(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes)
{
    // The buffered bytes must reach the host first. If they come right before the new bytes, one call writes both.
    const bool together = gathered_ != 0 && descriptor == gatherer_ && offset == size_;
    if (!together) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    if (const DWORD error = writeOutEarlier(); error != 0) {
        loseGathered(0, error);
        return {0, error};
    }
    const std::size_t before = gathered_;
    const HostWrite done =
        writeMarked(descriptor, offset - before, {gather_.get(), before}, bytes, markAfter(offset + bytes.size()));
    noteChange();
    if (done.bytes != 0)
        writtenTo_ = offset - before + done.bytes;
    if (done.bytes < before) {
        loseGathered(done.bytes, ioError(done.error));
        return {0, lost_};
    }
    gathered_ = 0;
    const DWORD error = ioError(done.error);
    return {done.bytes - before, error, error == ERROR_DISK_FULL};
}

// Drops all buffered bytes except the first `kept`, which are on the host already. The file then ends after the kept
// bytes. The dropped bytes are lost, although the program was told that they were written. So each later write fails
// with `error`, until endAt sets the length to at most the new size_.
void SharedFile::loseGathered(std::size_t kept, DWORD error)
{
    const std::size_t missing = gathered_ - kept;
    lost_ = error;
    mount_->giveBackRoom(missing);
    size_ -= missing;
    if (kept != 0)
        noteCut(size_);
    gathered_ = 0;
    ++version_;
}

bool SharedFile::canGather(int descriptor, std::uint64_t offset, std::size_t bytes)
{
    if (bytes > GatheredPiece || offset != size_ || offset < GatherFrom)
        return false;
    if (gatherer_ != -1 && gatherer_ != descriptor)
        return false;
    const std::uint64_t end = offset + bytes;
    const bool roomIsThere =
        end <= reservedTo_ || (offset < ReserveFrom ? fitsLastBlock(descriptor, end) : makeReserve(descriptor, end));
    if (roomIsThere)
        startGathering(descriptor);
    return roomIsThere;
}

void SharedFile::startGathering(int descriptor)
{
    if (gatherer_ == -1)
        ++gatherers;
    gatherer_ = descriptor;
    if (!gather_)
        gather_ = std::make_unique_for_overwrite<std::byte[]>(GatherBytes);
}

// Returns true if this process wrote the last byte that the file has on the host, and the bytes up to `end` fit into
// the block of that byte. The host allocated the whole block when it wrote that byte. Returns false on a file system
// that isn't one of ReservingFileSystems.
bool SharedFile::fitsLastBlock(int descriptor, std::uint64_t end) const
{
    const std::uint64_t hostEnd = size_ - gathered_;
    if (writtenTo_ != hostEnd)
        return false;
    const std::optional<std::uint64_t> block = blocksOf(descriptor, device_);
    return block && hostEnd % *block != 0 && (end - 1) / *block == hostEnd / *block;
}

// Reserves space up to `end` and beyond. Returns false if the file system can't do that or if the disk is full.
bool SharedFile::makeReserve(int descriptor, std::uint64_t end)
{
    if (reservedTo_ == 0 && !reservesNothing_)
        reservesNothing_ = !blocksOf(descriptor, device_);
    if (reservesNothing_)
        return false;
    const std::uint64_t hostEnd = size_ - gathered_;
    const std::uint64_t step = std::clamp(size_ / 4, ReserveLeast, ReserveMost);
    const std::uint64_t from = std::max(reservedTo_, hostEnd);
    const int result = reserve(descriptor, from, end - from + step);
    reservesNothing_ = result < 0;
    if (result < 0 && ioError(result) != ERROR_DISK_FULL)
        return false;
    // If the disk is full, the host may have reserved a part of the space. release() must give back this part, too.
    if (reservedTo_ == 0)
        ++reserves;
    startGathering(descriptor);
    reservedTo_ = result < 0 ? from : end + step;
    return result == 0;
}

}  // namespace platform::file
