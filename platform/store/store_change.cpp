// BeginStoreChange and EndStoreChange: the changes between the two calls are one transaction.
#include "ce/store.h"

#include "database/device_database.h"
#include "record_rows.h"
#include "store_state.h"
#include "store_trouble.h"

using platform::database::DatabaseUse;
using platform::database::Gathered;
using platform::database::Step;
using namespace platform::store;

namespace {

void changeEnded(Step step)
{
    StoreState& state = storeState();
    state.changeFault = step == Step::Done ? 0 : errorOf(step);
    if (step == Step::Done)
        return;
    // The rollback restored deleted databases and records and removed new ones. Increasing these counters makes open
    // enumerations of databases end, and makes cached positions of records invalid.
    ++state.databasesDeleted;
    ++state.recordsRemoved;
    state.misplaced.reset();
}

BOOL fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

}  // namespace

BOOL BeginStoreChange()
{
    return withinMemory(Trouble::Writing, Troubled::DatabaseList, {}, FALSE, [] {
        const DatabaseUse use;
        if (!use || storeState().changeIsOpen)
            return fail(use ? ERROR_INVALID_PARAMETER : ERROR_GEN_FAILURE);
        if (const Step begun = use->gather(changeEnded); begun != Step::Done) {
            noteStoreTrouble(Trouble::Writing, Troubled::DatabaseList, {}, errorOf(begun));
            return fail(errorOf(begun));
        }
        use->holdGathering();
        storeState().changeIsOpen = true;
        storeState().changedName.clear();
        ++storeState().changes;
        return TRUE;
    });
}

BOOL EndStoreChange(BOOL kept)
{
    return withinMemory(Trouble::Writing, Troubled::DatabaseList, {}, FALSE, [kept] {
        const DatabaseUse use(Gathered::GoOn);
        StoreState& state = storeState();
        if (!use || !state.changeIsOpen)
            return fail(use ? ERROR_INVALID_PARAMETER : ERROR_GEN_FAILURE);
        state.changeIsOpen = false;
        const bool wasWhole = use->isGathering();  // false: a call failed, and has noted the failure
        use->releaseGathering(kept != FALSE);
        if (!kept || state.changeFault == 0)
            return TRUE;
        if (wasWhole)
            noteStoreTrouble(Trouble::Writing, Troubled::Database, state.changedName, state.changeFault);
        return fail(state.changeFault);
    });
}
