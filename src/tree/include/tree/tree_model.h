// tree_model.h - reads, changes and adds items of the tree view, and defines their parameters and pictures.
//
// The tree view stores the text, the picture and the parameter of each item, and the program has no copy. The pictures
// show what is marked, but a run uses only the lists of marked items (item_kinds.h). All calls are made on the main
// window's thread.
#pragma once

#include "set/item_kinds.h"

#include "ce/tree_view.h"

extern HWND gTreeView;
extern HWND gCommandBands;  // the bar above the tree
extern HIMAGELIST gTreeImages;
extern HTREEITEM gRootDatabases;
extern HTREEITEM gRootFiles;
extern HTREEITEM gRootRegistry;

// The low half of an item's parameter is one of these codes. The code says what the item is.
inline constexpr WORD TreeCodeFile = 10006;
inline constexpr WORD TreeCodeRomFile = 10008;  // shown, never marked
inline constexpr WORD TreeCodeFolder = 10009;
inline constexpr WORD TreeCodeDatabase = 10011;
inline constexpr WORD TreeCodeRegistry = 10015;
inline constexpr WORD TreeCodeRegistryMarked = 10016;
inline constexpr WORD TreeCodeDatabasesRoot = 10100;
inline constexpr WORD TreeCodeFilesRoot = 10200;

// The index of the picture of a top item while no item below it is marked. The picture at the next index shows that
// items are marked.
inline constexpr int ImageDatabasesRoot = 0;
inline constexpr int ImageFilesRoot = 2;

// A kind of items, such as databases. The tree has a top item for the kind and lists the names of the kind's items
// below it (engine/item_names.h).
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

// NamedKindOfRoot returns the kind whose top item has this TreeCode. NamedKindOfItem returns the kind whose items have
// this TreeCode. Both return null if there is no such kind.
const NamedKind* NamedKindOfRoot(WORD code);
const NamedKind* NamedKindOfItem(WORD code);

// The high half of an item's parameter is its MarkCount: the number of marks on the item and below it. This count isn't
// exact (marking.cpp). An item's picture usually shows whether its count is 0, but not the count itself. The count has
// 16 bits, so a count that falls below 0 becomes a value just below 65536. marking.cpp treats such a value as 0.
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

// The index of the picture for an unmarked item with this TreeCode. The picture at the next index is for a marked one.
inline int UnmarkedImage(WORD code)
{
    return code - 10000;
}

inline int MarkedImage(WORD code)
{
    return code - 9999;
}

// A copy of an item. ReadTreeItem reads it from the tree view, and WriteTreeItem writes it back.
struct TreeItem {
    HTREEITEM handle;
    LPARAM parameter;
    int image;  // index of the picture; a selected item shows the same picture
    WCHAR text[MAX_PATH];
};

// Reads an item, with its text only if `withText` is true. Returns 0 if `handle` is null or belongs to no item.
BOOL ReadTreeItem(HTREEITEM handle, TreeItem& item, bool withText);
// Writes the parameter and the picture in one call, so that no reader gets a new parameter with an old picture.
BOOL WriteTreeItem(const TreeItem& item);
// Sets the code, the count and the picture in `item`. The picture is that of a marked item if the count isn't 0, and
// otherwise that of an unmarked item.
void SetMark(TreeItem& item, WORD code, WORD markCount);

// Adds an item. Returns its handle, or null if it couldn't be added. `after` is TVI_FIRST, TVI_LAST or TVI_SORT.
HTREEITEM InsertTreeItem(HTREEITEM parent, HTREEITEM after, const WCHAR* text, bool withButton, LPARAM parameter,
                         int image);

HTREEITEM NextTreeItem(WPARAM relation, HTREEITEM item);

// Loads the pictures into the tree view. Returns 0 if the list of pictures can't be made. In that case the main window
// removes the tree. Otherwise returns 1.
DWORD CreateTreeImages();
DWORD InsertRootItems(HWND tree);
