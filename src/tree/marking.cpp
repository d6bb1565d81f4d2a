// A mark is recorded twice. The lists have the names of the marked items, and a run uses only the lists. The items of
// the tree have a MarkCount, which determines their pictures. Lists and counts can differ for two reasons. First, a
// folder that isn't expanded has no items for the marked files below it. Second, MarkFolder adds the number of all
// visited files and folders to the counts, not the number of marked files. So the counts are used only for the
// pictures. If a change would bring a count below zero, the count is set to 0.
#include "tree/marking.h"

#include "engine/directory_walker.h"
#include "engine/options.h"
#include "engine/paths_too_long.h"
#include "item_path.h"
#include "set/set_state.h"
#include "tree_listing.h"

#include "ce/file.h"
#include "ce/text.h"

namespace {

// A MarkCount has 16 bits. If a change brings it below zero, it becomes a number just below 65536. So a count above a
// limit is treated as negative and set to 0. HighestItemCount is the limit for single items. When a folder is unmarked,
// HighestChildCount is the limit for the items below it, and HighestAncestorCount the limit for the folders above it.
constexpr WORD HighestItemCount = 65530;
constexpr WORD HighestChildCount = 65280;
constexpr WORD HighestAncestorCount = 65520;

// Single items.

bool IsRegistry(WORD code)
{
    return code == TreeCodeRegistry || code == TreeCodeRegistryMarked;
}

bool IsTopItem(LPARAM parameter)
{
    const WORD code = TreeCodeOf(parameter);
    return NamedKindOfRoot(code) || code == TreeCodeFilesRoot || IsRegistry(code);
}

WORD OneLess(WORD count)
{
    const auto less = static_cast<WORD>(count - 1);
    return less > HighestItemCount ? WORD{0} : less;
}

// Adds a name to the list, or removes it if the list has it already. Returns whether the list has the name afterwards.
bool ToggleName(ItemList* list, const WCHAR* name, std::uint64_t bytes)
{
    if (!list)
        return false;
    if (list->Contains(name, NameBytes(name))) {
        list->Remove(name, NameBytes(name));
        return false;
    }
    return list->Add(name, NameBytes(name), bytes) != FALSE;
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
            folder.image = MarkedImage(TreeCodeFolder);  // even if the count was raised from 65535 to 0
        WriteTreeItem(folder);
    }
}

bool ToggleFile(HTREEITEM item)
{
    WCHAR path[MAX_PATH];
    if (!FilePathOfItem(item, path))
        return false;
    const bool marked = ToggleName(gFileList, path, BytesOfFile(path));
    // This changes nothing for a file in the root. The only item above it is "Files", which doesn't count marks.
    CountOnFolders(item, marked);
    return marked;
}

// Toggles the mark of a file or a database in its list. For the registry, only computes the new mark, which
// ToggleRegistry sets later. Returns whether the item is marked after the toggle.
bool ToggleInLists(const TreeItem& item)
{
    const WORD code = TreeCodeOf(item.parameter);
    if (const NamedKind* kind = NamedKindOfItem(code))
        return ToggleName(*KindOf(kind->kind).list, item.text, 0);
    if (code == TreeCodeFile)
        return ToggleFile(item.handle);
    return code == TreeCodeRegistry;
}

void ToggleRegistry(TreeItem& item, bool marked)
{
    gRegistryMarked = marked ? 1 : 0;
    item.parameter = TreeParameter(marked ? TreeCodeRegistryMarked : TreeCodeRegistry, marked ? 1 : 0);
    item.image = marked ? MarkedImage(TreeCodeRegistry) : UnmarkedImage(TreeCodeRegistry);
}

void RefreshItem(TreeItem& item)
{
    const WORD code = TreeCodeOf(item.parameter);
    if (MarkCountOf(item.parameter) > HighestItemCount)
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

// Folders.

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
        gFileList->Add(path, NameBytes(path), gWalkedEntry.bytes);
    return TRUE;
}

// Marks or unmarks the files below the folder. Returns the number of files and folders that the walks visited, not the
// number of files that were marked. The first walk marks or unmarks the files of all extensions, even if the filter by
// extension is on. In that case one more walk follows for each extension of the filter. These walks change no marks and
// only increase the total.
DWORD WalkFolder(HTREEITEM item, DWORD mark)
{
    WCHAR root[MAX_PATH];
    if (!FolderPathOfItem(item, root))
        return 0;
    DWORD total = WalkDirectory(root, nullptr, TRUE, FALSE, MarkFileInFolder, mark);
    const PathsTooLong left = gPathsTooLong;  // the later walks would note some paths again
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

// Changes the MarkCounts of `first`, of its later siblings and of all items below these. Returns the number of files
// among them. A folder without items in the tree counts as one file. Files in ROM don't change and don't count.
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
    // A folder that was just marked, and the folders above it, show a tick even if the total is 0.
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

DWORD ToggleItem(HTREEITEM handle)
{
    TreeItem item;
    if (!ReadTreeItem(handle, item, true))
        return 1;
    const WORD code = TreeCodeOf(item.parameter);
    if (NamedKindOfRoot(code) || code == TreeCodeFilesRoot || code == TreeCodeFolder)
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
        ShowPathsTooLong(left);
    return 1;
}
