#include "use_elsewhere.h"

#include "file_system.h"
#include "host/error.h"
#include "host_calls.h"

#include "ce/file.h"

#include <fcntl.h>
#include <linux/magic.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace platform::file {

using host::platformError;

namespace {

// File systems that can refuse a lease with EAGAIN even if no process uses the file. On other file systems this error
// means that the file is in use.
constexpr std::array<std::uint64_t, 11> NetworkFileSystems = {
    NFS_SUPER_MAGIC, SMB_SUPER_MAGIC,  CIFS_SUPER_MAGIC,        SMB2_SUPER_MAGIC,      CEPH_SUPER_MAGIC, AFS_FS_MAGIC,
    V9FS_MAGIC,      CODA_SUPER_MAGIC, 0x0BD00BD0 /* Lustre */, 0x01161970 /* GFS2 */, OCFS2_SUPER_MAGIC};

bool leasesCanBeTrusted(int file, std::uint64_t device)
{
    const std::optional<FileSystem> system = fileSystemOf(file, device);
    return system && std::ranges::find(NetworkFileSystems, system->kind) == NetworkFileSystems.end();
}

// Returns the type of lease that shows whether another process violates `sharing`. The host refuses a write lease while
// another process has the file open, and a read lease while another process has it open for writing. Empty if neither
// type fits `sharing`.
std::optional<int> probingLease(const Sharing& sharing)
{
    if ((sharing.share & (FILE_SHARE_READ | FILE_SHARE_WRITE)) == 0)
        return F_WRLCK;
    // The host grants no read lease on a file that this process has open for writing.
    if ((sharing.share & FILE_SHARE_WRITE) == 0 && (sharing.access & GENERIC_WRITE) == 0)
        return F_RDLCK;
    return std::nullopt;
}

}  // namespace

Lease probeLease(int file, const Sharing& sharing, std::uint64_t device)
{
    const std::optional<int> lease = probingLease(sharing);
    if (!lease || !leasesCanBeTrusted(file, device))
        return Lease::NotGiven;
    const int result = setLease(file, *lease);
    if (result != 0)
        return result == -EAGAIN ? Lease::InUse : Lease::NotGiven;
    (void)setLease(file, F_UNLCK);  // fails only if the lease is gone already
    return Lease::Held;
}

LeaseTaken takeLease(int file, std::uint64_t device)
{
    switch (const int result = setLease(file, F_WRLCK)) {
    case 0:
        return {Lease::Held};
    case -EAGAIN:
        return {leasesCanBeTrusted(file, device) ? Lease::InUse : Lease::NotGiven};
    case -EACCES:  // another user's file
    case -EPERM:
    case -EINVAL:  // a file system without leases
    case -EOPNOTSUPP:
    case -ENOLCK:
        return {Lease::NotGiven};
    default:
        return {Lease::NotGiven, platformError(result)};
    }
}

}  // namespace platform::file
