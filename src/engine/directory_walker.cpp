#include "engine/directory_walker.h"

#include "engine/paths_too_long.h"

#include "ce/file.h"
#include "ce/text.h"

#include <algorithm>

WalkedEntry gWalkedEntry;
const WCHAR* gFolderLeftOut;

namespace {

// What is the same in all folders of a walk.
struct Walk {
    BOOL recurse;
    BOOL foldersOnly;
    WalkCallback callback;
    UINT_PTR context;
};

DWORD WalkSubfolder(const WIN32_FIND_DATAW& found, const WCHAR* parent, const Walk& walk);

// Lists one folder. `attributes` are those of the folder.
DWORD WalkFolder(const WCHAR* folder, DWORD attributes, const WCHAR* pattern, const Walk& walk)
{
    WCHAR searchPath[MAX_PATH];
    if (!JoinPath(searchPath, folder, pattern)) {
        NotePathTooLong(folder, pattern);
        return 0;
    }

    WIN32_FIND_DATAW found = {};
    HANDLE search =
        FindFirstFileExW(searchPath, FindExInfoStandard, &found,
                         walk.foldersOnly ? FindExSearchLimitToDirectories : FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE)
        return 0;

    DWORD count = 0;
    do {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (isFolder && walk.recurse && found.cFileName[0] != u'.')
            count += WalkSubfolder(found, folder, walk);
        if (walk.foldersOnly && !isFolder)
            continue;
        count++;
        gWalkedEntry = {std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow, found.ftLastWriteTime,
                        attributes};
        if (walk.callback && !walk.callback(found.cFileName, folder, found.dwFileAttributes, walk.context))
            break;
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return count;
}

// This function and WalkFolder call each other. Each subfolder makes the path longer, so the limit of a path's length
// also limits the depth of the calls.
DWORD WalkSubfolder(const WIN32_FIND_DATAW& found, const WCHAR* parent, const Walk& walk)
{
    WCHAR subfolder[MAX_PATH];
    // The path needs room for a backslash and for the pattern of the search.
    if (wcslen(parent) + wcslen(found.cFileName) + 2 >= MAX_PATH) {
        NotePathTooLong(parent, found.cFileName);
        return 0;
    }
    wsprintfW(subfolder, u"%s%s\\", parent, found.cFileName);
    if (gFolderLeftOut && lstrcmpW(subfolder, gFolderLeftOut) == 0)
        return 0;
    return WalkFolder(subfolder, found.dwFileAttributes, u"*", walk);
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
    return WalkFolder(root, FILE_ATTRIBUTE_DIRECTORY, pattern ? pattern : u"*",
                      {recurse, foldersOnly, callback, context});
}
