// set_state.cpp - see set_state.h.

#include "set/set_state.h"

#include <new>

ItemList* gFileList = nullptr;
ItemList* gDatabaseList = nullptr;
EntryBuffer gRegistryEntry;
DWORD gRegistryMarked = 0;
DWORD gSavedRegistryMarked = 0;
WCHAR gComment[CommentChars] = {};

void RenewLists()
{
    delete gFileList;
    gFileList = new (std::nothrow) ItemList(FileListId);
    delete gDatabaseList;
    gDatabaseList = new (std::nothrow) ItemList(DatabaseListId);
}
