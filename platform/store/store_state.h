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
    std::unordered_map<CEOID, unsigned> openHandles;  // for each database with open handles: their number
    std::uint64_t databasesDeleted = 0;               // an enumeration ends if this number has changed since it began
    std::uint64_t recordsRemoved = 0;                 // a KnownPosition is invalid once this number has changed
    bool changeIsOpen = false;                        // true from BeginStoreChange to EndStoreChange
    std::uint64_t changes = 0;                        // number of calls of BeginStoreChange that succeeded
    DWORD changeFault = 0;                            // 0, or why the change that began last isn't on the disk
    std::u16string changedName;                       // the database that was created last since BeginStoreChange
    // Names of the databases whose row has a wrong folded name (DatabaseName). No value until a search has looked for
    // all of them. No call creates such a row, so the result stays valid until a rollback restores deleted databases.
    std::optional<std::unordered_map<CEOID, std::u16string>> misplaced;
};
[[nodiscard]] StoreState& storeState();

// Returns the error if the change that BeginStoreChange began is open, but has failed and was rolled back. Otherwise
// returns 0. Call this function before each change of a database or record.
[[nodiscard]] DWORD faultOfChange(database::Connection& connection);

}  // namespace platform::store
