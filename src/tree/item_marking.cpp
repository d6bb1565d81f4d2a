// item_marking.cpp - see item_marking.h.

#include "item_marking.h"

#include "item_path.h"
#include "set/set_state.h"

#include "ce/text.h"

namespace {

// A count above it was taken below zero.
constexpr WORD HighestCount = 65530;

bool IsTopItem(LPARAM parameter)
{
    switch (TreeCodeOf(parameter)) {
    case TreeCodeDatabasesRoot:
    case TreeCodeFilesRoot:
    case TreeCodeRegistry:
    case TreeCodeRegistryMarked:
        return true;
    default:
        return false;
    }
}

WORD OneLess(WORD count)
{
    const auto less = static_cast<WORD>(count - 1);
    return less > HighestCount ? WORD{0} : less;
}

// Adds a name, or takes it out if it is there. True if it is in the list now.
bool ToggleName(ItemList* list, const WCHAR* name)
{
    if (!list)
        return false;
    if (list->Contains(name, NameBytes(name))) {
        list->Remove(name, NameBytes(name));
        return false;
    }
    list->Add(name, NameBytes(name));
    return true;
}

void CountOnFolders(HTREEITEM file, bool marked)
{
    for (HTREEITEM handle = NextTreeItem(TVGN_PARENT, file); handle; handle = NextTreeItem(TVGN_PARENT, handle)) {
        TreeItem folder;
        if (!ReadTreeItem(handle, folder, false) || IsTopItem(folder.parameter))
            continue;
        const WORD count = MarkCountOf(folder.parameter);
        SetMark(folder, TreeCodeFolder, marked ? static_cast<WORD>(count + 1) : OneLess(count));
        if (marked)
            folder.image = MarkedImage(TreeCodeFolder);  // also where the count has gone round to 0
        WriteTreeItem(folder);
    }
}

bool ToggleFile(HTREEITEM item)
{
    WCHAR path[MAX_PATH];
    if (!FilePathOfItem(item, path))
        return false;
    const bool marked = ToggleName(gFileList, path);
    // A file of the root has no folder above it but "Files", which doesn't count.
    CountOnFolders(item, marked);
    return marked;
}

// True if the item is marked now.
bool ToggleInLists(const TreeItem& item)
{
    switch (TreeCodeOf(item.parameter)) {
    case TreeCodeDatabase:
        return ToggleName(gDatabaseList, item.text);
    case TreeCodeFile:
        return ToggleFile(item.handle);
    case TreeCodeRegistry:
        return true;
    default:
        return false;
    }
}

void ToggleRegistry(TreeItem& item, bool marked)
{
    gRegistryMarked = marked ? 1 : 0;
    item.parameter = TreeParameter(marked ? TreeCodeRegistryMarked : TreeCodeRegistry, marked ? 1 : 0);
    item.image = marked ? MarkedImage(TreeCodeRegistry) : UnmarkedImage(TreeCodeRegistry);
}

bool IsRegistry(WORD code)
{
    return code == TreeCodeRegistry || code == TreeCodeRegistryMarked;
}

void RefreshItem(TreeItem& item)
{
    const WORD code = TreeCodeOf(item.parameter);
    if (MarkCountOf(item.parameter) > HighestCount)
        item.parameter = TreeParameter(code, 0);
    const WORD count = MarkCountOf(item.parameter);
    if (code == TreeCodeRomFile)
        return;
    if (code == TreeCodeFolder && count == 0) {
        item.image = UnmarkedImage(code);
        RefreshMarks(NextTreeItem(TVGN_CHILD, item.handle));
    } else if (code == TreeCodeFile) {
        item.image = count ? MarkedImage(code) : UnmarkedImage(code);
    }
    WriteTreeItem(item);
}

}  // namespace

DWORD ToggleItem(HTREEITEM handle)
{
    TreeItem item;
    if (!ReadTreeItem(handle, item, true))
        return 1;
    const WORD code = TreeCodeOf(item.parameter);
    if (code == TreeCodeDatabasesRoot || code == TreeCodeFilesRoot || code == TreeCodeFolder)
        return 1;
    const bool marked = ToggleInLists(item);
    if (IsRegistry(code)) {
        ToggleRegistry(item, marked);
    } else {
        const WORD count = MarkCountOf(item.parameter);
        SetMark(item, code, marked ? static_cast<WORD>(count + 1) : OneLess(count));
    }
    WriteTreeItem(item);
    return 1;
}

DWORD RefreshMarks(HTREEITEM first)
{
    for (HTREEITEM handle = first; handle;) {
        HTREEITEM next = NextTreeItem(TVGN_NEXT, handle);
        TreeItem item;
        if (ReadTreeItem(handle, item, false))
            RefreshItem(item);
        handle = next;
    }
    return 1;
}
