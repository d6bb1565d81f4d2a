#include "known_attributes.h"

#include "attributes.h"
#include "file_system.h"

#include <linux/magic.h>

#include <algorithm>
#include <ctime>

namespace platform::file {

namespace {

// Longer than the coarsest step in which a file system stores times.
constexpr std::int64_t SettledSeconds = 3;

// On these file systems, each change of an attribute sets the change time from this machine's clock.
constexpr std::array<std::uint64_t, 5> TimingFileSystems = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC,
                                                            TMPFS_MAGIC, F2FS_SUPER_MAGIC};

bool timesAreOurs(int folder, std::uint64_t device)
{
    const std::optional<FileSystem> system = fileSystemOf(folder, device);
    return system && std::ranges::find(TimingFileSystems, system->kind) != TimingFileSystems.end();
}

}  // namespace

KnownAttributes& KnownAttributes::instance()
{
    static KnownAttributes only;
    return only;
}

std::optional<DWORD> KnownAttributes::find(const HostStatus& status)
{
    const kernel::MutexLock lock(mutex_);
    const auto& chunk = chunks_[status.stx_ino / ChunkSlots % Chunks];
    if (!chunk)
        return std::nullopt;
    const Slot& slot = (*chunk)[status.stx_ino % ChunkSlots];
    const bool same = slot.inode == status.stx_ino && slot.inode != 0 && slot.device == deviceOf(status) &&
                      slot.seconds == status.stx_ctime.tv_sec && slot.nanoseconds == status.stx_ctime.tv_nsec;
    return same ? std::optional(slot.bits) : std::nullopt;
}

void KnownAttributes::note(const HostStatus& status, DWORD bits)
{
    const kernel::MutexLock lock(mutex_);
    auto& chunk = chunks_[status.stx_ino / ChunkSlots % Chunks];
    if (!chunk)
        chunk = std::make_unique<Chunk>();
    (*chunk)[status.stx_ino % ChunkSlots] = {deviceOf(status), status.stx_ino, status.stx_ctime.tv_sec,
                                             status.stx_ctime.tv_nsec, bits};
}

bool KnownAttributes::isSettled(int folder, const HostStatus& status)
{
    timespec now = {};
    return ::clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0 && status.stx_ctime.tv_sec < now.tv_sec - SettledSeconds &&
           timesAreOurs(folder, deviceOf(status));
}

}  // namespace platform::file
