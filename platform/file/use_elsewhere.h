// use_elsewhere.h - finds out by leases whether another process uses a file.
#pragma once

#include "open_files.h"

#include <cstdint>

namespace platform::file {

enum class Lease {
    Held,     // the host gives it: no other process has the file open
    InUse,    // another process has the file open
    NotGiven  // the host refuses the lease for another reason
};

// Whether another process uses the file in a way that `sharing` forbids (InUse). `file` is the only descriptor of this
// process on it. A lease is taken and dropped at once. NotGiven if the host can't say: for a file of another user, on a
// network file system, and for sharing that no lease expresses. If sharing allows others to read, Held doesn't exclude
// readers.
[[nodiscard]] Lease probeLease(int file, const Sharing& sharing, std::uint64_t device);

// Takes a write lease and keeps it until `file` is closed. Another process that opens the file waits for that. `error`
// is set if the host failed.
struct LeaseTaken {
    Lease lease = Lease::NotGiven;
    DWORD error = 0;
};
[[nodiscard]] LeaseTaken takeLease(int file, std::uint64_t device);

}  // namespace platform::file
