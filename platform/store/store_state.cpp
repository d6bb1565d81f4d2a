#include "store_state.h"

namespace platform::store {

StoreState& storeState()
{
    static StoreState state;
    return state;
}

DWORD faultOfChange(database::Connection& connection)
{
    return storeState().changeIsOpen && !connection.isGathering() ? storeState().changeFault : 0;
}

}  // namespace platform::store
