// tree_model.h - the items of the tree: their parameters, their images and the top items.
//
// There is no model beside the control, which keeps the text, images and parameter of each item. A run takes what is in
// the lists (item_kinds.h); the image of an item shows the same. The main window's thread only.
#pragma once

#include "set/item_kinds.h"

#include "ce/tree_view.h"

extern HWND gTreeView;
extern HWND gCommandBands;  // the bar above the tree
extern HIMAGELIST gTreeImages;
extern HTREEITEM gRootDatabases;
extern HTREEITEM gRootFiles;
extern HTREEITEM gRootRegistry;

// Low half of an item's parameter: what the item is. There are no other values.
inline constexpr WORD TreeCodeFile = 10006;
inline constexpr WORD TreeCodeRomFile = 10008;  // shown, never marked
inline constexpr WORD TreeCodeFolder = 10009;
inline constexpr WORD TreeCodeDatabase = 10011;
inline constexpr WORD TreeCodeRegistry = 10015;
inline constexpr WORD TreeCodeRegistryMarked = 10016;
inline constexpr WORD TreeCodeDatabasesRoot = 10100;
inline constexpr WORD TreeCodeFilesRoot = 10200;

// The image of a top item while nothing is marked. The next one is for marks.
inline constexpr int ImageDatabasesRoot = 0;
inline constexpr int ImageFilesRoot = 2;

// A kind whose items the tree lists by name below a top item (engine/item_names.h).
struct NamedKind {
    BYTE kind;
    const WCHAR* rootText;
    HTREEITEM* root;
    WORD rootCode;
    WORD itemCode;
    int rootImage;
};

inline constexpr NamedKind NamedKinds[] = {{.kind = ItemKindDatabase,
                                            .rootText = u"Databases",
                                            .root = &gRootDatabases,
                                            .rootCode = TreeCodeDatabasesRoot,
                                            .itemCode = TreeCodeDatabase,
                                            .rootImage = ImageDatabasesRoot}};

// The kind that has this TreeCode for its top item, or for its items; otherwise null.
const NamedKind* NamedKindOfRoot(WORD code);
const NamedKind* NamedKindOfItem(WORD code);

// High half: the MarkCount, the number of marks on the item or below it. It isn't exact, and only whether it is 0
// shows. It counts modulo 65536, so a count just below 65536 is negative.
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

// An item, read from the control to be changed and written back.
struct TreeItem {
    HTREEITEM handle;
    LPARAM parameter;
    int image;  // for both the selected and the unselected item
    WCHAR text[MAX_PATH];
};

// 0 if the handle isn't that of an item, or null. The text is read too if `withText`.
BOOL ReadTreeItem(HTREEITEM handle, TreeItem& item, bool withText);
// Writes parameter and image in one call, so that no reader sees one without the other.
BOOL WriteTreeItem(const TreeItem& item);
// Sets the code and the count of `item` and the image for them: the marked one unless the count is 0.
void SetMark(TreeItem& item, WORD code, WORD markCount);

// Adds an item and returns its handle, or null. `after` is TVI_FIRST, TVI_LAST or TVI_SORT.
HTREEITEM InsertTreeItem(HTREEITEM parent, HTREEITEM after, const WCHAR* text, bool withButton, LPARAM parameter,
                         int image);

HTREEITEM NextTreeItem(WPARAM relation, HTREEITEM item);

// 1, or 0 if the image list can't be made: then there is no tree.
DWORD CreateTreeImages();
DWORD InsertRootItems(HWND tree);
