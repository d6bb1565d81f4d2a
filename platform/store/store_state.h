// store_state.h - the state of the object store that is in memory only.
#pragma once

#include "database/connection.h"

#include "ce/store.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace platform::store {

// Use it only while a database::DatabaseUse lives. Only one thread at a time can have a DatabaseUse.
struct StoreState {
    std::unordered_map<CEOID, unsigned> openHandles;  // number of handles on each database that has any
    std::uint64_t databasesDeleted = 0;               // a walk ends if this number has changed since it began
    std::uint64_t recordsRemoved = 0;                 // known positions are invalid once this number has changed
    bool changeIsOpen = false;                        // true from BeginStoreChange to EndStoreChange
    std::uint64_t changes = 0;                        // number of calls of BeginStoreChange that succeeded
    DWORD changeFault = 0;                            // 0, or why the change that began last isn't on the disk
    std::u16string changedName;                       // the database that was last created in that change
    // Names of the databases whose row has a wrong folded name. No call creates such a row, so one search finds all of
    // them.
    std::optional<std::unordered_map<CEOID, std::u16string>> misplaced;
};
[[nodiscard]] StoreState& storeState();

// Returns an error if the change that BeginStoreChange began has failed and was rolled back, otherwise 0. Call this
// function before each change.
[[nodiscard]] DWORD faultOfChange(database::Connection& connection);

}  // namespace platform::store
