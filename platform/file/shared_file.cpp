// shared_file.cpp - gathering writes, and the card's capacity.
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

// A longer write gains nothing from being copied first.
constexpr std::size_t GatheredPiece = 8192;

// Up to here each write goes straight to the host: so few bytes may lie in the inode, and have no block yet.
constexpr std::uint64_t GatherFrom = 1024;

// Up to here only the last block is filled: reserving would cost a small file more than it saves.
constexpr std::uint64_t ReserveFrom = 32768;

// The reserve grows with the file, so that what has to be given back stays in proportion.
constexpr std::uint64_t ReserveLeast = 131072;
constexpr std::uint64_t ReserveMost = 4194304;

// Where a block that was written takes further bytes without asking for room again, where reserved room is really
// there for the writes to come, and is freed by cutting the file to its own size. btrfs writes each block anew and
// keeps what was reserved, ZFS only checks that there is room.
constexpr std::array<std::uint64_t, 3> ReservingFileSystems = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC};

std::atomic<int> reserves = 0;
std::atomic<int> gatherers = 0;

// The block size of a host that keeps room as told above.
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

// Both spans one after the other; as much as the host takes.
struct HostWrite {
    std::size_t bytes = 0;
    long error = 0;
};

HostWrite writeBoth(int descriptor, std::uint64_t place, std::span<const std::byte> first,
                    std::span<const std::byte> second)
{
    HostWrite done;
    while (done.bytes < first.size() + second.size()) {
        const std::size_t ofFirst = std::min(done.bytes, first.size());
        const std::array<iovec, 2> rest = {vectorOf(first.subspan(ofFirst)),
                                           vectorOf(second.subspan(done.bytes - ofFirst))};
        // One alone costs the host less.
        const std::size_t skipped = rest[0].iov_len == 0 ? 1 : 0;
        const std::size_t used = rest[1].iov_len == 0 || skipped != 0 ? 1 : 2;
        const ssize_t taken = writeAt(descriptor, std::span(rest).subspan(skipped, used), place + done.bytes);
        if (taken <= 0) {
            done.error = taken < 0 ? taken : -ENOSPC;
            break;
        }
        done.bytes += static_cast<std::size_t>(taken);
    }
    return done;
}

}  // namespace

SharedFile::SharedFile(std::shared_ptr<MountedFolder> mount, std::uint64_t device, std::uint64_t size)
    : mount_(std::move(mount)), device_(device), size_(size)
{
}

Written SharedFile::write(int descriptor, std::uint64_t place, std::span<const std::byte> bytes)
{
    if (lost_ != 0)
        return {0, lost_};
    const std::uint64_t end = place + bytes.size();
    const std::uint64_t growth = end > size_ ? end - size_ : 0;
    const std::uint64_t room = mount_->takeRoom(growth);
    std::span<const std::byte> fitting = bytes;
    if (room < growth) {
        const std::uint64_t fullAt = size_ + room;
        fitting = bytes.first(fullAt > place ? static_cast<std::size_t>(fullAt - place) : 0);
    }
    Written written = put(descriptor, place, fitting);

    const std::uint64_t newSize = written.bytes != 0 ? std::max(size_, place + written.bytes) : size_;
    if (newSize - size_ < room)
        mount_->giveBackRoom(room - (newSize - size_));
    size_ = newSize;
    ++version_;
    if (written.error == 0 && written.bytes < bytes.size())
        written.error = ERROR_DISK_FULL;
    return written;
}

DWORD SharedFile::endAt(int descriptor, std::uint64_t size)
{
    // What was lost lay behind the present end, so a file that ends there or before lacks nothing.
    if (const DWORD error = release(); error != 0 && size > size_)
        return error;
    const std::uint64_t growth = size > size_ ? size - size_ : 0;
    const std::uint64_t room = mount_->takeRoom(growth);
    const int result = room < growth ? -ENOSPC : file::setSize(descriptor, size);
    noteChange();
    if (result < 0) {
        mount_->giveBackRoom(room);
        return ioError(result);
    }
    mount_->giveBackRoom(size_ > size ? size_ - size : 0);
    size_ = size;
    lost_ = 0;
    writtenTo_ = 0;  // the end may lie in a hole now
    ++version_;
    return 0;
}

DWORD SharedFile::writeOut()
{
    if (gathered_ == 0)
        return lost_;
    const std::uint64_t place = size_ - gathered_;
    const HostWrite done = writeBoth(gatherer_, place, {gather_.get(), gathered_}, {});
    noteChange();
    if (done.bytes != 0)
        writtenTo_ = place + done.bytes;
    if (done.error != 0) {
        lost_ = ioError(done.error);
        mount_->giveBackRoom(gathered_ - done.bytes);
        size_ = place + done.bytes;
        ++version_;
    }
    gathered_ = 0;
    return lost_;
}

DWORD SharedFile::release()
{
    const DWORD error = writeOut();
    if (reservedTo_ != 0) {
        // Cutting a file to its own size frees what is reserved behind. If the host won't, nothing is wrong
        // but the room.
        if (reservedTo_ > size_ || reservesNothing_)
            (void)file::setSize(gatherer_, size_);
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

Written SharedFile::put(int descriptor, std::uint64_t place, std::span<const std::byte> bytes)
{
    if (bytes.empty())
        return {};
    if (!canGather(descriptor, place, bytes.size()))
        return putStraight(descriptor, place, bytes);
    if (gathered_ + bytes.size() > GatherBytes) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    std::memcpy(gather_.get() + gathered_, bytes.data(), bytes.size());
    gathered_ += bytes.size();
    return {bytes.size(), 0};
}

Written SharedFile::putStraight(int descriptor, std::uint64_t place, std::span<const std::byte> bytes)
{
    // What is gathered goes before it, in the same call if it may.
    const bool together = gathered_ != 0 && descriptor == gatherer_ && place == size_;
    if (!together) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    const std::size_t before = gathered_;
    const HostWrite done = writeBoth(descriptor, place - before, {gather_.get(), before}, bytes);
    noteChange();
    if (done.bytes != 0)
        writtenTo_ = place - before + done.bytes;
    if (done.bytes < before) {
        lost_ = ioError(done.error);
        mount_->giveBackRoom(before - done.bytes);
        size_ -= before - done.bytes;
        gathered_ = 0;
        return {0, lost_};
    }
    gathered_ = 0;
    const DWORD error = ioError(done.error);
    return {done.bytes - before, error, error == ERROR_DISK_FULL};
}

bool SharedFile::canGather(int descriptor, std::uint64_t place, std::size_t bytes)
{
    if (bytes > GatheredPiece || place != size_ || place < GatherFrom)
        return false;
    if (gatherer_ != -1 && gatherer_ != descriptor)
        return false;
    const std::uint64_t end = place + bytes;
    const bool roomIsThere =
        end <= reservedTo_ || (place < ReserveFrom ? fitsLastBlock(descriptor, end) : makeReserve(descriptor, end));
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

bool SharedFile::fitsLastBlock(int descriptor, std::uint64_t end) const
{
    const std::uint64_t hostEnd = size_ - gathered_;
    if (writtenTo_ != hostEnd)
        return false;
    const std::optional<std::uint64_t> block = blocksOf(descriptor, device_);
    return block && hostEnd % *block != 0 && (end - 1) / *block == hostEnd / *block;
}

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
    // A host that became full on the way may have reserved a part: that has to be given back too.
    if (reservedTo_ == 0)
        ++reserves;
    startGathering(descriptor);
    reservedTo_ = result < 0 ? from : end + step;
    return result == 0;
}

}  // namespace platform::file
