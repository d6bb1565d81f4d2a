#include "store/object_store.h"

#include "database_walk.h"
#include "open_database.h"
#include "store_state.h"

namespace platform::store {

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
