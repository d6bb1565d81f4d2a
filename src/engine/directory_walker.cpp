#include "engine/directory_walker.h"

#include "engine/paths_too_long.h"

#include "ce/file.h"
#include "ce/text.h"

#include <algorithm>

WalkedEntry gWalkedEntry;
const WCHAR* gFolderLeftOut;

namespace {

// This function and WalkDirectory call each other. Each level makes the path longer, so the limit of a path's length
// also limits the depth.
DWORD WalkSubfolder(const WCHAR* name, const WCHAR* root, BOOL foldersOnly, WalkCallback callback, UINT_PTR context)
{
    WCHAR subfolder[MAX_PATH];
    // The path needs room for a backslash and for the pattern of the search.
    if (wcslen(root) + wcslen(name) + 2 >= MAX_PATH) {
        NotePathTooLong(root, name);
        return 0;
    }
    wsprintfW(subfolder, u"%s%s\\", root, name);
    if (gFolderLeftOut && lstrcmpW(subfolder, gFolderLeftOut) == 0)
        return 0;
    return WalkDirectory(subfolder, nullptr, TRUE, foldersOnly, callback, context);
}

}  // namespace

std::uint64_t BytesOfFile(const WCHAR* path)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    // This call asks for no access, so it also succeeds for a file that is in use or can't be read.
    HANDLE file = CreateFileW(path, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 0;
    (void)GetFileInformationByHandle(file, &information);
    CloseHandle(file);
    return std::uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
}

BOOL JoinPath(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name)
{
    const std::size_t folderChars = wcslen(folder);
    const std::size_t nameChars = wcslen(name);
    if (folderChars + nameChars >= MAX_PATH)
        return FALSE;
    std::copy_n(folder, folderChars, path);
    std::copy_n(name, nameChars + 1, path + folderChars);
    return TRUE;
}

DWORD WalkDirectory(const WCHAR* root, const WCHAR* pattern, BOOL recurse, BOOL foldersOnly, WalkCallback callback,
                    UINT_PTR context)
{
    WCHAR searchPath[MAX_PATH];
    const WCHAR* searched = pattern ? pattern : u"*";
    if (!JoinPath(searchPath, root, searched)) {
        NotePathTooLong(root, searched);
        return 0;
    }

    WIN32_FIND_DATAW found = {};
    HANDLE search = FindFirstFileExW(searchPath, FindExInfoStandard, &found,
                                     foldersOnly ? FindExSearchLimitToDirectories : FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE)
        return 0;

    DWORD count = 0;
    do {
        const bool folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (folder && recurse && found.cFileName[0] != u'.')
            count += WalkSubfolder(found.cFileName, root, foldersOnly, callback, context);
        if (foldersOnly && !folder)
            continue;
        count++;
        gWalkedEntry = {std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow, found.ftLastWriteTime};
        if (callback && !callback(found.cFileName, root, found.dwFileAttributes, context))
            break;
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return count;
}
