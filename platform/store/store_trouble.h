// store_trouble.h - records failures of the object store's calls (kernel/troubles.h), so that the user learns of them
// at the end of a job or of the process.
#pragma once

#include "kernel/troubles.h"

#include "ce/error.h"

#include <new>
#include <string_view>

namespace platform::store {

using kernel::Trouble;
using kernel::Troubled;

// Notes the error if it says that the disk failed or is full, that memory ran out, or that data is damaged. Errors of
// wrong calls and of missing objects aren't noted. `error` may be 0.
inline void noteStoreTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error)
{
    if (error == ERROR_GEN_FAILURE || error == ERROR_DISK_FULL || error == ERROR_NOT_ENOUGH_MEMORY)
        kernel::noteTrouble(kind, what, name, error);
}

// Returns the result of `call`. If `call` runs out of memory, notes the failure, sets the last error to
// ERROR_NOT_ENOUGH_MEMORY and returns `failed`.
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
