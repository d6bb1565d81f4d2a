#include "tree_listing.h"

#include "engine/directory_walker.h"
#include "engine/item_names.h"
#include "engine/options.h"
#include "item_path.h"
#include "set/set_state.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"
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

bool IsListed(ItemList* list, const WCHAR* name)
{
    return list && list->Contains(name, NameBytes(name));
}

// Returns whether gFileList has a path that begins with `folderPath`. Contains() gets `folderPath` without its NUL, so
// it also finds longer paths. A path that it finds is usually below the folder. But for the folder "\AB" it can also be
// "\ABC.TXT".
bool HoldsMarks(const WCHAR* folderPath)
{
    return gFileList && gFileList->Contains(folderPath, NameBytes(folderPath) - DWORD{sizeof(WCHAR)});
}

bool HasAnyEntry(const WCHAR* folderPath)
{
    WCHAR pattern[MAX_PATH];
    WIN32_FIND_DATAW found = {};
    if (!JoinPath(pattern, folderPath, u"\\*"))
        return false;
    HANDLE search = FindFirstFileW(pattern, &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    return true;
}

// Whether the folder directly contains any folder, or a file with one of the extensions of gOptions.
bool HasFilteredEntry(const WCHAR* folderPath)
{
    WCHAR root[MAX_PATH];
    if (!JoinPath(root, folderPath, u"\\"))
        return false;
    bool found = false;
    ForEachExtensionPattern([&](const WCHAR* pattern) {
        found = WalkDirectory(root, pattern, TRUE, FALSE, nullptr, 0) != 0;
        return !found;
    });
    return found || WalkDirectory(root, u"*", FALSE, TRUE, nullptr, 0) != 0;
}

void InsertFolder(HTREEITEM parent, const WCHAR* name, const WCHAR* path)
{
    const bool button = gOptions.extensionFilterOn ? HasFilteredEntry(path) : HasAnyEntry(path);
    const WORD count = HoldsMarks(path) ? 1 : 0;
    InsertTreeItem(parent, TVI_FIRST, name, button, TreeParameter(TreeCodeFolder, count),
                   count ? MarkedImage(TreeCodeFolder) : UnmarkedImage(TreeCodeFolder));
}

void InsertFile(HTREEITEM parent, const WCHAR* name, const WCHAR* path, DWORD attributes)
{
    if (IsRomFile(attributes)) {
        // No dialog of the program turns this option off, but it can be off in the registry.
        if (gOptions.showRomFiles)
            InsertTreeItem(parent, TVI_LAST, name, false, TreeParameter(TreeCodeRomFile, 0),
                           UnmarkedImage(TreeCodeRomFile));
        return;
    }
    const WORD count = IsListed(gFileList, path) ? 1 : 0;
    InsertTreeItem(parent, TVI_LAST, name, false, TreeParameter(TreeCodeFile, count),
                   count ? MarkedImage(TreeCodeFile) : UnmarkedImage(TreeCodeFile));
}

BOOL InsertListedItem(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    auto* parent = reinterpret_cast<HTREEITEM>(context);
    WCHAR path[MAX_PATH];
    if (!FullPathOfEntry(path, folder, name))
        return TRUE;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        InsertFolder(parent, name, path);
    else if (!FilterHidesFile(path, attributes))
        InsertFile(parent, name, path, attributes);
    return TRUE;
}

void ListFolder(HTREEITEM item)
{
    WCHAR root[MAX_PATH];
    if (!FolderPathOfItem(item, root))
        return;
    const auto context = reinterpret_cast<UINT_PTR>(item);
    if (!gOptions.extensionFilterOn) {
        WalkDirectory(root, nullptr, FALSE, FALSE, InsertListedItem, context);
        return;
    }
    WalkDirectory(root, nullptr, FALSE, TRUE, InsertListedItem, context);
    ForEachExtensionPattern([&](const WCHAR* pattern) {
        WalkDirectory(root, pattern, FALSE, FALSE, InsertListedItem, context);
        return true;
    });
}

void InsertNamedItem(HTREEITEM parent, const NamedKind& kind, const WCHAR* name)
{
    const WORD code = kind.itemCode;
    const WORD count = IsListed(*KindOf(kind.kind).list, name) ? 1 : 0;
    InsertTreeItem(parent, TVI_SORT, name, false, TreeParameter(code, count),
                   count ? MarkedImage(code) : UnmarkedImage(code));
}

void ListNames(HTREEITEM item, const NamedKind& kind)
{
    ForEachName(kind.kind, [&](const WCHAR* name) {
        if (name)
            InsertNamedItem(item, kind, name);
    });
}

}  // namespace

bool FilterHidesFile(const WCHAR* path, DWORD attributes)
{
    if (gOptions.hideByAttribute && (attributes & gOptions.hiddenAttributes) != 0)
        return true;
    // Reading the time opens the file. So the time is read only if the filter by date is on.
    if (!gOptions.newerThanOn)
        return false;
    const FILETIME written = WriteTimeOf(path);
    return CompareFileTime(&written, &gOptions.newerThan) < 0;
}

bool IsRomFile(DWORD attributes)
{
    return (attributes & (FILE_ATTRIBUTE_ROMMODULE | FILE_ATTRIBUTE_INROM)) != 0;
}

DWORD ListChildren(HTREEITEM item, WORD code)
{
    if (const NamedKind* kind = NamedKindOfRoot(code)) {
        ListNames(item, *kind);
    } else if (code == TreeCodeFilesRoot || code == TreeCodeFolder) {
        SearchForChoices(TRUE);
        ListFolder(item);
        SearchForChoices(FALSE);
    }
    return 1;
}
