// store_trouble.h - notes the failures that the host reports to the user at the end (kernel/troubles.h).
#pragma once

#include "kernel/troubles.h"

#include "ce/error.h"

#include <new>
#include <string_view>

namespace platform::store {

using kernel::Trouble;
using kernel::Troubled;

// Notes only failures of the disk, of memory and damage, not wrong calls or missing objects. `error` may be 0.
inline void noteStoreTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    if (error == ERROR_GEN_FAILURE || error == ERROR_DISK_FULL || error == ERROR_NOT_ENOUGH_MEMORY)
        kernel::noteTrouble(kind, what, name, error);
}

// Returns the result of `call`. If it runs out of memory, notes that, sets the last error 8 and returns `failed`.
template <class Result, class Call>
Result withinMemory(Trouble kind, Troubled what, std::u16string_view name, Result failed, Call call)
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        try {
            noteStoreTrouble(kind, what, name, ERROR_NOT_ENOUGH_MEMORY);
        } catch (const std::bad_alloc&) {  // the caller still gets the error
        }
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failed;
    }
}

}  // namespace platform::store
