// tree_listing.cpp - see tree_listing.h.

#include "tree_listing.h"

#include "engine/directory_walker.h"
#include "engine/options.h"
#include "item_path.h"
#include "set/set_state.h"
#include "tree_filter.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/store.h"
#include "ce/text.h"

namespace {

bool IsListed(ItemList* list, const WCHAR* name)
{
    return list && list->Contains(name, NameBytes(name));
}

// Without the terminator in the key: something below the folder, or beside it with a name that begins alike.
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

// A file of a listed extension anywhere below, or any folder.
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
        // Only a settings record from elsewhere has ROM files off: then they are no items.
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

void InsertDatabase(HTREEITEM parent, const WCHAR* name)
{
    const WORD count = IsListed(gDatabaseList, name) ? 1 : 0;
    InsertTreeItem(parent, TVI_SORT, name, false, TreeParameter(TreeCodeDatabase, count),
                   count ? MarkedImage(TreeCodeDatabase) : UnmarkedImage(TreeCodeDatabase));
}

void ListDatabases(HTREEITEM item)
{
    HANDLE enumeration = CeFindFirstDatabase(0);
    if (enumeration == INVALID_HANDLE_VALUE)
        return;
    while (const CEOID oid = CeFindNextDatabase(enumeration)) {
        CEOIDINFO info = {};
        if (!CeOidGetInfo(oid, &info) || info.wObjType != OBJTYPE_DATABASE)
            continue;  // gone since the enumeration saw it
        const WCHAR* name = info.infDatabase.szDbaseName;
        if (name[0] != u'\\')
            InsertDatabase(item, name);
    }
    CloseHandle(enumeration);
}

}  // namespace

DWORD ListChildren(HTREEITEM item, WORD code)
{
    if (code == TreeCodeDatabasesRoot) {
        ListDatabases(item);
    } else if (code == TreeCodeFilesRoot || code == TreeCodeFolder) {
        SearchForChoices(TRUE);
        ListFolder(item);
        SearchForChoices(FALSE);
    }
    return 1;
}
