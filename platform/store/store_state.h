// store_state.h - holds the part of the object store's state that exists only in memory.
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
    // The oid and the name of each database whose row has a wrong folded name. The right one is the folded name that
    // DatabaseName::of makes from the row's name. The variable has no value until a search has looked for such rows. It
    // loses its value when such a row is deleted, and when a rollback restores deleted databases. No call creates such
    // a row.
    std::optional<std::unordered_map<CEOID, std::u16string>> misplaced;
};
[[nodiscard]] StoreState& storeState();

// Returns an error if a failure has rolled back the transaction of BeginStoreChange, and EndStoreChange hasn't been
// called since. Otherwise returns 0. Call this function before each change of a database or record.
[[nodiscard]] DWORD faultOfChange(database::Connection& connection);

}  // namespace platform::store
