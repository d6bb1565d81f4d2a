// store_trouble.h - which failures of this room's calls are told in the end (kernel's troubles.h).
#pragma once

#include "troubles.h"

#include "ce/error.h"

#include <string_view>

namespace platform::store {

using kernel::Trouble;
using kernel::Troubled;

// Counts only what the disk or damage does: no call that was wrong, nothing that isn't there. `error` may be 0.
inline void noteStoreTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    if (error == ERROR_GEN_FAILURE || error == ERROR_DISK_FULL || error == ERROR_NOT_ENOUGH_MEMORY)
        kernel::noteTrouble(kind, what, name, error);
}

}  // namespace platform::store
