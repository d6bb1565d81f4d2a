// tree_filter.cpp - see tree_filter.h.

#include "tree_filter.h"

#include "engine/options.h"

#include "ce/file.h"
#include "ce/time.h"

namespace {

FILETIME WriteTimeOf(const WCHAR* path)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    HANDLE file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        GetFileInformationByHandle(file, &information);
        CloseHandle(file);
    }
    return information.ftLastWriteTime;
}

}  // namespace

bool FilterHidesFile(const WCHAR* path, DWORD attributes)
{
    if (gOptions.hideByAttribute && (attributes & gOptions.hiddenAttributes) != 0)
        return true;
    // The time costs an open, so it is asked for only where it is looked at.
    if (!gOptions.newerThanOn)
        return false;
    const FILETIME written = WriteTimeOf(path);
    return CompareFileTime(&written, &gOptions.newerThan) < 0;
}

bool IsRomFile(DWORD attributes)
{
    return (attributes & (FILE_ATTRIBUTE_ROMMODULE | FILE_ATTRIBUTE_INROM)) != 0;
}
