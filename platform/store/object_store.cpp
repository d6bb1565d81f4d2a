// The object store's own state.
#include "store/object_store.h"

#include "database_walk.h"
#include "open_database.h"

namespace platform::store {

StoreState& storeState()
{
    static StoreState state;
    return state;
}

void closeStore()
{
    kernel::removeHandlesIf([](const kernel::Object& object) {
        return dynamic_cast<const OpenDatabase*>(&object) != nullptr ||
               dynamic_cast<const DatabaseWalk*>(&object) != nullptr;
    });
    if (storeState().changeIsOpen)
        (void)EndStoreChange(FALSE);
    storeState().misplaced.reset();
}

}  // namespace platform::store
