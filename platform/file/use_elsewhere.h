// use_elsewhere.h - finds out by leases whether another process uses a file.
#pragma once

#include "open_files.h"

#include <cstdint>

namespace platform::file {

// Whether another process uses the file in a way that `sharing` forbids. `file` is the only descriptor of this process
// on it. A lease is taken and dropped at once: the host gives it only if no other process has the file open. False if
// the host can't say: for a file of another user, on a network file system, and for sharing that no lease expresses.
[[nodiscard]] bool isUsedElsewhere(int file, const Sharing& sharing, std::uint64_t device);

enum class Lease {
    Held,     // until `file` is closed no other process has the file open; one that opens it waits
    InUse,    // another process has the file open
    NotGiven  // the host refuses the lease for another reason
};

// Takes a write lease and keeps it. `error` is set if the host failed.
struct LeaseTaken {
    Lease lease = Lease::NotGiven;
    DWORD error = 0;
};
[[nodiscard]] LeaseTaken takeLease(int file, std::uint64_t device);

}  // namespace platform::file
