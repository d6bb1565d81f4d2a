#include "set/set_state.h"

EntryBuffer gRegistryEntry;
DWORD gRegistryMarked = 0;
DWORD gSavedRegistryMarked = 0;
WCHAR gComment[CommentChars] = {};

bool NothingIsMarked()
{
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list && CountOf(*kind.list) != 0)
            return false;
    }
    return !gRegistryMarked;
}
