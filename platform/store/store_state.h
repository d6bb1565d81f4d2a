// store_state.h - what the object store keeps in memory while the process runs.
#pragma once

#include "database/connection.h"

#include "ce/store.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace platform::store {

// Use it only while a database::DatabaseUse lives, which lets one thread in at a time.
struct StoreState {
    std::unordered_map<CEOID, unsigned> openHandles;  // number of handles on each database; 0 has no entry
    std::uint64_t databasesDeleted = 0;               // a walk that began at another number has ended
    std::uint64_t recordsRemoved = 0;                 // a position that was counted at another number is stale
    bool changeIsOpen = false;                        // between BeginStoreChange and EndStoreChange
    std::uint64_t changes = 0;                        // number of calls of BeginStoreChange that succeeded
    DWORD changeFault = 0;                            // why the latest of them isn't on the disk
    std::u16string changedName;                       // the database that the latest of them created last
    // Names of the databases whose row has a wrong folded name. Searched for once, since no call makes such a row.
    std::optional<std::unordered_map<CEOID, std::u16string>> misplaced;
};
[[nodiscard]] StoreState& storeState();

// Call it before each change. 0, or why the change that BeginStoreChange began has failed already.
[[nodiscard]] DWORD faultOfChange(database::Connection& connection);

}  // namespace platform::store
