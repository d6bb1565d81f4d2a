#include "ce/error.h"

namespace {
thread_local constinit DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError()
{
    return lastError;
}

void SetLastError(DWORD error)
{
    lastError = error;
}
