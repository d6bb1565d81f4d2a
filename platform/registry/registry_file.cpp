// RegCopyFile and RegRestoreFile.
#include "ce/registry_file.h"

#include "kernel/troubles.h"
#include "registry/registry_content.h"
#include "staged_registry.h"

#include "ce/file.h"

#include <cstddef>
#include <span>

using namespace platform::kernel;

namespace {

// Writes the registry to the file. Returns 0 or the error.
DWORD writeRegistry(HANDLE file)
{
    DWORD error = ERROR_SUCCESS;
    const bool written = platform::registry::writeContent([&](std::span<const std::byte> bytes) {
        DWORD count = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr))
            error = GetLastError();
        return error == ERROR_SUCCESS;
    });
    return written || error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

// Notes a failure for the registry, sets the last error and returns FALSE. The calls on the file have noted the failure
// only for the file.
BOOL fail(Trouble kind, DWORD error)
{
    noteTrouble(kind, Troubled::Registry, {}, error);
    SetLastError(error);
    return FALSE;
}

}  // namespace

BOOL RegCopyFile(const WCHAR* path)
{
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return fail(Trouble::Reading, GetLastError());
    DWORD error = writeRegistry(file);
    if (!CloseHandle(file) && error == ERROR_SUCCESS)  // CloseHandle writes the last bytes
        error = GetLastError();
    if (error == ERROR_SUCCESS)
        return TRUE;
    (void)DeleteFileW(path);  // a truncated file could be mistaken for a whole registry
    return fail(Trouble::Reading, error);
}

BOOL RegRestoreFile(const WCHAR* path)
{
    // At the end the call deletes the file, and a read-only file can't be deleted. So the call opens the file for
    // writing, which fails for a read-only file before anything changes.
    const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND ? FALSE : fail(Trouble::Writing, GetLastError());
    const DWORD error = platform::registry::stageRegistry(file);
    CloseHandle(file);
    if (error != ERROR_SUCCESS)
        return fail(Trouble::Writing, error);
    if (DeleteFileW(path))  // last, so that the file or its staged copy exists at every moment
        return TRUE;
    const DWORD notDeleted = GetLastError();
    platform::registry::unstageRegistry();
    return fail(Trouble::Writing, notDeleted);
}
