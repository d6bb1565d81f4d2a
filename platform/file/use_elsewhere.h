// use_elsewhere.h - finds out whether another process uses a file. Asks the host (the Linux system) for a lease, which
// the host refuses for a file in use.
#pragma once

#include "open_files.h"

#include <cstdint>

namespace platform::file {

enum class Lease {
    Held,     // the host grants the lease: no other process has the file open in a conflicting way
    InUse,    // another process has the file open in a conflicting way
    NotGiven  // the host refuses the lease for another reason
};

// Returns InUse if another process uses the file in a way that `sharing` forbids. `file` is the only descriptor of this
// process on the file. The call takes a lease and drops it at once. Returns NotGiven if a lease doesn't show whether
// the file is used. Examples are a file of another user, a network file system, and a `sharing` that no type of lease
// fits. Held means that the host granted the lease. If `sharing` allows others to read, other processes may be reading
// the file even then.
[[nodiscard]] Lease probeLease(int file, const Sharing& sharing, std::uint64_t device);

// The result of takeLease, which takes a write lease and keeps it until `file` is closed. Until then, another process
// that opens the file waits. `error` isn't 0 if the host failed.
struct LeaseTaken {
    Lease lease = Lease::NotGiven;
    DWORD error = 0;
};
[[nodiscard]] LeaseTaken takeLease(int file, std::uint64_t device);

}  // namespace platform::file
