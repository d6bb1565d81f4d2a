// tree_model.h - what a tree item is: its parameter, its images, and the three top items.
//
// There is no model beside the control, which keeps each item's text, images and parameter. What a run takes stands in
// the lists, and the look of an item is a second record of it. The main window's thread only.
#pragma once

#include "ce/tree_view.h"

extern HWND gTreeView;
extern HWND gCommandBands;  // the bar above the tree
extern HIMAGELIST gTreeImages;
extern HTREEITEM gRootDatabases;
extern HTREEITEM gRootFiles;
extern HTREEITEM gRootRegistry;

// Low half of an item's parameter: what it is. There are no others.
inline constexpr WORD TreeCodeFile = 10006;
inline constexpr WORD TreeCodeRomFile = 10008;  // shown, never marked
inline constexpr WORD TreeCodeFolder = 10009;
inline constexpr WORD TreeCodeDatabase = 10011;
inline constexpr WORD TreeCodeRegistry = 10015;
inline constexpr WORD TreeCodeRegistryMarked = 10016;
inline constexpr WORD TreeCodeDatabasesRoot = 10100;
inline constexpr WORD TreeCodeFilesRoot = 10200;

inline constexpr int ImageDatabasesRoot = 0;  // while nothing is marked; the next one when something is
inline constexpr int ImageFilesRoot = 2;

// The high half is the MarkCount: how many marks the item holds or has below it. No exact tally, only whether it is 0
// shows. It counts modulo 65536, so a count just below 65536 is one below zero.
inline WORD TreeCodeOf(LPARAM parameter)
{
    return LOWORD(static_cast<DWORD>(parameter));
}

inline WORD MarkCountOf(LPARAM parameter)
{
    return HIWORD(static_cast<DWORD>(parameter));
}

inline LPARAM TreeParameter(WORD code, WORD markCount)
{
    return static_cast<LPARAM>(MAKELONG(code, markCount));
}

// The image of a file, folder, database or the registry, by its code.
inline int UnmarkedImage(WORD code)
{
    return code - 10000;
}

inline int MarkedImage(WORD code)
{
    return code - 9999;
}

// An item as it is read from the control and written back.
struct TreeItem {
    HTREEITEM handle;
    LPARAM parameter;
    int image;  // for both the selected and the unselected item
    WCHAR text[MAX_PATH];
};

// 0 for a handle that is no item (any more), null included. The text is read too if `withText`.
BOOL ReadTreeItem(HTREEITEM handle, TreeItem& item, bool withText);
// Parameter and image together, so that no reader sees one without the other.
BOOL WriteTreeItem(const TreeItem& item);
// Sets an item's code and count, and the image that goes with them: marked unless the count is 0.
void SetMark(TreeItem& item, WORD code, WORD markCount);

// Adds an item; its handle, or null. `after` is TVI_FIRST, TVI_LAST or TVI_SORT.
HTREEITEM InsertTreeItem(HTREEITEM parent, HTREEITEM after, const WCHAR* text, bool withButton, LPARAM parameter,
                         int image);

HTREEITEM NextTreeItem(WPARAM relation, HTREEITEM item);

// 1, or 0 if the image list can't be made: then there is no tree.
DWORD CreateTreeImages();
DWORD InsertRootItems(HWND tree);
