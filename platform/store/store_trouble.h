// store_trouble.h - which failures of this room's calls are told in the end (kernel's troubles.h).
#pragma once

#include "kernel/troubles.h"

#include "ce/error.h"

#include <new>
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

// The result of a call for which there may be too little memory: then `failed`, with 8.
template <class Result, class Call>
Result withinMemory(Trouble kind, Troubled what, std::u16string_view name, Result failed, Call call)
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        try {
            noteStoreTrouble(kind, what, name, ERROR_NOT_ENOUGH_MEMORY);
        } catch (const std::bad_alloc&) {  // the caller is told all the same
        }
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failed;
    }
}

}  // namespace platform::store
