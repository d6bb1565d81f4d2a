#include "set/item_kinds.h"

#include <new>

void RenewLists()
{
    DeleteLists();
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list)
            *kind.list = new (std::nothrow) ItemList(kind.listId);
    }
}

void DeleteLists()
{
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list) {
            delete *kind.list;
            *kind.list = nullptr;
        }
    }
}
