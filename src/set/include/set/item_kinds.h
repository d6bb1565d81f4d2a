// item_kinds.h - defines the lists of items, and a table with a row for each kind of item. Code that treats all kinds
// alike reads the kind's names, lists and texts from this row. Code that differs by kind is in the engine:
// backup_items.cpp stores an item, restore_run.cpp restores an item, and item_names.cpp enumerates the items of the
// device. tree_model.h has a similar table for the tree.
//
// All calls are made on the main window's thread.
#pragma once

#include "set/item_list.h"
#include "set/texts.h"

#include "ce/outcome.h"
#include "ce/types.h"

// First byte of an entry of a list file (docs/format.md, "List file"). Any other value is read as the registry.
inline constexpr BYTE ItemKindFile = 1;
inline constexpr BYTE ItemKindDatabase = 2;
inline constexpr BYTE ItemKindRegistry = 3;

// The files and databases that are marked, or that a loaded set contains. These lists are filled in one of three ways:
// - The tree adds the items that the user marks.
// - A full backup or a backup command adds the items that it finds on the device.
// - LoadList adds the items of a set.
// The runs read the lists. The entry of a marked item is a name. The entry of an item of a loaded set is a name and two
// offsets. The pointers are null before the first RenewLists, and after a RenewLists that found no memory.
inline ItemList* gFileList;
inline ItemList* gDatabaseList;

// Tags of the lists.
inline constexpr DWORD FileListId = 10002;
inline constexpr DWORD DatabaseListId = 10000;

// Whether the next full backup includes files, databases and the registry. Each variable is 1 or 0.
inline DWORD gFullFiles;
inline DWORD gFullDatabases;
inline DWORD gFullRegistry;

struct ItemKind {
    BYTE number;          // first byte of an entry of this kind in a list file
    const char* word;     // name of the kind in quillbox-set
    const WCHAR* ending;  // extension of a file to which quillbox-set extracts an item; null for the registry
    DWORD reportedAs;     // the kind in the report of an item that failed (ce/outcome.h)
    ItemList** list;      // null for the registry, which is a single item (gRegistryMarked)
    DWORD listId;         // tag of the list
    DWORD* inFullBackup;  // set by a check box of the full backup's dialog
    int fullBackupBox;    // id of that check box
    TextId listing;       // title of the window while a full backup lists the items; none for the registry
    TextId row;           // row of a list box, a format for the name
    TextId message;       // message of the window while an item is stored or restored, a format for the name
};

inline constexpr ItemKind ItemKinds[] = {
    {.number = ItemKindFile,
     .word = "file",
     .ending = u"",
     .reportedAs = OutcomeFile,
     .list = &gFileList,
     .listId = FileListId,
     .inFullBackup = &gFullFiles,
     .fullBackupBox = 1005,
     .listing = TextConstructFileList,
     .row = TextFileRowFormat,
     .message = TextFileFormat},
    {.number = ItemKindDatabase,
     .word = "database",
     .ending = u".CDB",
     .reportedAs = OutcomeDatabase,
     .list = &gDatabaseList,
     .listId = DatabaseListId,
     .inFullBackup = &gFullDatabases,
     .fullBackupBox = 1006,
     .listing = TextConstructDatabaseList,
     .row = TextDatabaseRowFormat,
     .message = TextDatabaseFormat},
    {.number = ItemKindRegistry,
     .word = "registry",
     .ending = nullptr,
     .reportedAs = OutcomeRegistry,
     .list = nullptr,
     .listId = 0,
     .inFullBackup = &gFullRegistry,
     .fullBackupBox = 1007,
     .listing = {},
     .row = TextRegistry,
     .message = TextRegistry},
};

inline constexpr bool IsItemKind(BYTE number)
{
    for (const ItemKind& kind : ItemKinds) {
        if (kind.number == number)
            return true;
    }
    return false;
}

// Returns the row of the kind. For an unknown number it returns the row of the registry.
inline constexpr const ItemKind& KindOf(BYTE number)
{
    for (const ItemKind& kind : ItemKinds) {
        if (kind.number == number)
            return kind;
    }
    return KindOf(ItemKindRegistry);
}

// Returns the number of entries, or 0 if `list` is null.
inline DWORD CountOf(const ItemList* list)
{
    return list ? list->Count() : 0;
}

// Deletes the lists and makes new, empty ones.
void RenewLists();
void DeleteLists();
