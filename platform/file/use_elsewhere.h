// use_elsewhere.h - does another process use a file in a way that the sharing asked for forbids?
#pragma once

#include "open_files.h"

#include <cstdint>

namespace platform::file {

// `file` is the only descriptor of this process on the file. Told by a lease that is taken and dropped at
// once: the host grants it only if nobody else has the file open. True only if the host says so for sure:
// a file of another user, a network folder or sharing that leases can't express give false.
[[nodiscard]] bool isUsedElsewhere(int file, const Sharing& sharing, std::uint64_t device);

enum class Lease {
    Held,     // until `file` is closed nobody else has the file open, and who opens it waits
    InUse,    // another process has it open
    NotGiven  // for another reason
};

// The same for a lease that is kept. `error` tells of a failure of the host.
struct LeaseTaken {
    Lease lease = Lease::NotGiven;
    DWORD error = 0;
};
[[nodiscard]] LeaseTaken takeLease(int file, std::uint64_t device);

}  // namespace platform::file
