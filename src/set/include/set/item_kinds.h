// item_kinds.h - the kinds of items: a row for each, with all that the rest of the program treats alike in all kinds.
// The rest is in the engine, where backup_items.cpp stores an item, restore_run.cpp restores it and item_names.cpp
// enumerates what the device has, and in tree_model.h of the tree.
//
// The main window's thread only.
#pragma once

#include "set/item_list.h"
#include "set/texts.h"

#include "ce/outcome.h"
#include "ce/types.h"

// First byte of an entry of a list file (docs/format.md, "List file"). Readers treat any other value as the registry.
inline constexpr BYTE ItemKindFile = 1;
inline constexpr BYTE ItemKindDatabase = 2;
inline constexpr BYTE ItemKindRegistry = 3;

// What is marked, or what a loaded set contains. The tree and the loader of a set write the lists, and the runs read
// them. An entry is a name while the user marks, and a name with offsets after a set was loaded. Null before RenewLists
// and if there was no memory for them.
inline ItemList* gFileList;
inline ItemList* gDatabaseList;

// Tags of the lists.
inline constexpr DWORD FileListId = 10002;
inline constexpr DWORD DatabaseListId = 10000;

// What the next full backup includes, 1 or 0.
inline DWORD gFullFiles;
inline DWORD gFullDatabases;
inline DWORD gFullRegistry;

struct ItemKind {
    BYTE number;          // first byte of its entries
    const char* word;     // what quillbox-set calls it
    const WCHAR* ending;  // of the file to which quillbox-set extracts one; none for the registry
    DWORD reportedAs;     // what the report of an item that failed calls it (ce/outcome.h)
    ItemList** list;      // null for the registry, a single item (gRegistryMarked)
    DWORD listId;         // tag of the list
    DWORD* inFullBackup;  // set by a check box of the full backup's dialog
    int fullBackupBox;    // id of that check box
    TextId listing;       // title of the window while a full backup lists them; none for the registry
    TextId row;           // row of a list box, a format for the name
    TextId message;       // message of the window while one is stored or restored, a format for the name
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

// The row of the kind; for an unknown number that of the registry.
inline constexpr const ItemKind& KindOf(BYTE number)
{
    for (const ItemKind& kind : ItemKinds) {
        if (kind.number == number)
            return kind;
    }
    return KindOf(ItemKindRegistry);
}

// Entries of a list; 0 for one that couldn't be made.
inline DWORD CountOf(const ItemList* list)
{
    return list ? list->Count() : 0;
}

// Deletes the lists and makes new, empty ones.
void RenewLists();
// Deletes the lists.
void DeleteLists();
