// folder_marking.cpp - see folder_marking.h.

#include "tree/folder_marking.h"

#include "engine/directory_walker.h"
#include "engine/options.h"
#include "engine/paths_too_long.h"
#include "item_marking.h"
#include "item_path.h"
#include "set/set_state.h"
#include "tree_filter.h"

#include "ce/file.h"
#include "ce/text.h"

namespace {

// Counts above these were taken below zero.
constexpr WORD HighestChildCount = 65280;
constexpr WORD HighestAncestorCount = 65520;

BOOL MarkFileInFolder(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR mark)
{
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) || IsRomFile(attributes) || !gFileList)
        return TRUE;
    WCHAR path[MAX_PATH];
    if (!FullPathOfEntry(path, folder, name)) {
        NotePathTooLong(folder, name);
        return TRUE;
    }
    if (FilterHidesFile(path, attributes))
        return TRUE;
    if (!mark)
        gFileList->Remove(path, NameBytes(path));
    else if (!gFileList->Contains(path, NameBytes(path)))
        gFileList->Add(path, NameBytes(path));
    return TRUE;
}

// How many entries the walks saw: what the counts gain, and no number of files. With the filter by extension the first
// walk goes through all files whatever their extension; the others add to the total only.
DWORD WalkFolder(HTREEITEM item, DWORD mark)
{
    WCHAR root[MAX_PATH];
    if (!FolderPathOfItem(item, root))
        return 0;
    DWORD total = WalkDirectory(root, nullptr, TRUE, FALSE, MarkFileInFolder, mark);
    const PathsTooLong left = gPathsTooLong;  // of all files; the others meet some of them again
    if (gOptions.extensionFilterOn)
        ForEachExtensionPattern([&](const WCHAR* pattern) {
            total += WalkDirectory(root, pattern, FALSE, FALSE, MarkFileInFolder, mark);
            return true;
        });
    gPathsTooLong = left;
    return total;
}

void TakeFromCount(TreeItem& item, WORD code, DWORD number)
{
    const auto count = static_cast<WORD>(MarkCountOf(item.parameter) - number);
    SetMark(item, code, count > HighestChildCount ? WORD{0} : count);
}

// Returns the number of items, a folder with nothing listed counting as one.
DWORD MarkVisibleChildren(DWORD mark, HTREEITEM first)
{
    DWORD total = 0;
    for (HTREEITEM handle = first; handle;) {
        HTREEITEM next = NextTreeItem(TVGN_NEXT, handle);
        TreeItem item;
        if (ReadTreeItem(handle, item, false) && TreeCodeOf(item.parameter) != TreeCodeRomFile) {
            const bool folder = TreeCodeOf(item.parameter) == TreeCodeFolder;
            DWORD number = folder ? MarkVisibleChildren(mark, NextTreeItem(TVGN_CHILD, handle)) : 1;
            number = number ? number : 1;
            const WORD code = folder ? TreeCodeFolder : TreeCodeFile;
            if (mark)
                SetMark(item, code, static_cast<WORD>(number));
            else
                TakeFromCount(item, code, number);
            WriteTreeItem(item);
            total += number;
        }
        handle = next;
    }
    return total;
}

void MarkAncestor(TreeItem& item, DWORD mark, DWORD total)
{
    WORD count = MarkCountOf(item.parameter);
    if (mark)
        count = static_cast<WORD>(count + total);
    else if (count > HighestAncestorCount)
        count = 0;
    SetMark(item, TreeCodeFolder, count);
    // A folder that was just marked shows its tick whatever the total.
    if (mark)
        item.image = MarkedImage(TreeCodeFolder);
}

void MarkAncestors(HTREEITEM item, DWORD mark, DWORD total)
{
    for (HTREEITEM handle = NextTreeItem(TVGN_PARENT, item); handle; handle = NextTreeItem(TVGN_PARENT, handle)) {
        TreeItem ancestor;
        if (!ReadTreeItem(handle, ancestor, false) || TreeCodeOf(ancestor.parameter) != TreeCodeFolder)
            continue;
        MarkAncestor(ancestor, mark, total);
        WriteTreeItem(ancestor);
    }
}

}  // namespace

DWORD MarkFolder(DWORD mark)
{
    TreeItem item;
    if (!ReadTreeItem(NextTreeItem(TVGN_CARET, nullptr), item, false) || TreeCodeOf(item.parameter) != TreeCodeFolder)
        return 0;
    gPathsTooLong = {};
    const DWORD total = WalkFolder(item.handle, mark);
    const PathsTooLong left = gPathsTooLong;
    MarkVisibleChildren(mark, NextTreeItem(TVGN_CHILD, item.handle));
    if (mark)
        MarkAncestor(item, mark, total);
    else
        SetMark(item, TreeCodeFolder, 0);
    WriteTreeItem(item);
    MarkAncestors(item.handle, mark, total);
    RefreshMarks(gRootFiles);
    if (mark)
        TellPathsTooLong(left);
    return 1;
}
