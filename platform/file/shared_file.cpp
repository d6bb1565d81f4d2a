// shared_file.cpp - gathering writes, and the card's capacity.
#include "shared_file.h"

#include "host_error.h"

#include "ce/error.h"

#include <linux/magic.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>

namespace platform::file {

namespace {

constexpr std::size_t GatherBytes = 65536;

// A longer write gains nothing from being copied first.
constexpr std::size_t GatheredPiece = 8192;

// Up to here each write goes straight to the host: reserving would cost a small file more than it saves.
constexpr std::uint64_t GatherFrom = 32768;

// The reserve grows with the file, so that what has to be given back stays in proportion.
constexpr std::uint64_t ReserveLeast = 131072;
constexpr std::uint64_t ReserveMost = 4194304;

// Where reserved room is really there for the writes to come, and is freed by cutting the file to its own
// size. ZFS only checks that there is room, btrfs keeps what was reserved.
constexpr std::array<std::uint64_t, 3> ReservingFileSystems = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC};

std::atomic<int> reserves = 0;

bool hostKeepsReserves(int file)
{
    const std::optional<std::uint64_t> kind = fileSystemKind(file);
    return kind && std::ranges::find(ReservingFileSystems, *kind) != ReservingFileSystems.end();
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

SharedFile::SharedFile(std::shared_ptr<MountedFolder> mount, std::uint64_t size) : mount_(std::move(mount)), size_(size)
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
    if (const DWORD error = release(); error != 0)
        return error;
    const std::uint64_t growth = size > size_ ? size - size_ : 0;
    const std::uint64_t room = mount_->takeRoom(growth);
    const int result = room < growth ? -ENOSPC : file::setSize(descriptor, size);
    if (result < 0) {
        mount_->giveBackRoom(room);
        return platformError(result);
    }
    mount_->giveBackRoom(size_ > size ? size_ - size : 0);
    size_ = size;
    ++version_;
    return 0;
}

DWORD SharedFile::writeOut()
{
    if (gathered_ == 0)
        return lost_;
    const std::uint64_t place = size_ - gathered_;
    const HostWrite done = writeBoth(gatherer_, place, {gather_.get(), gathered_}, {});
    if (done.error != 0) {
        lost_ = platformError(done.error);
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
    gatherer_ = -1;
    return error;
}

bool SharedFile::anyReserves()
{
    return reserves.load() != 0;
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
    if (done.bytes < before) {
        lost_ = platformError(done.error);
        mount_->giveBackRoom(before - done.bytes);
        size_ -= before - done.bytes;
        gathered_ = 0;
        return {0, lost_};
    }
    gathered_ = 0;
    const DWORD error = platformError(done.error);
    return {done.bytes - before, error, error == ERROR_DISK_FULL};
}

bool SharedFile::canGather(int descriptor, std::uint64_t place, std::size_t bytes)
{
    if (bytes > GatheredPiece || place != size_ || place < GatherFrom)
        return false;
    if (gatherer_ != -1 && gatherer_ != descriptor)
        return false;
    return place + bytes <= reservedTo_ || makeReserve(descriptor, place + bytes);
}

bool SharedFile::makeReserve(int descriptor, std::uint64_t end)
{
    if (reservedTo_ == 0 && !reservesNothing_)
        reservesNothing_ = !hostKeepsReserves(descriptor);
    if (reservesNothing_)
        return false;
    const std::uint64_t hostEnd = size_ - gathered_;
    const std::uint64_t step = std::clamp(size_ / 4, ReserveLeast, ReserveMost);
    const std::uint64_t from = std::max(reservedTo_, hostEnd);
    const int result = reserve(descriptor, from, end - from + step);
    reservesNothing_ = result < 0;
    if (result < 0 && platformError(result) != ERROR_DISK_FULL)
        return false;
    // A host that became full on the way may have reserved a part: that has to be given back too.
    if (reservedTo_ == 0)
        ++reserves;
    gatherer_ = descriptor;
    reservedTo_ = result < 0 ? from : end + step;
    if (result < 0)
        return false;
    if (!gather_)
        gather_ = std::make_unique_for_overwrite<std::byte[]>(GatherBytes);
    return true;
}

}  // namespace platform::file
