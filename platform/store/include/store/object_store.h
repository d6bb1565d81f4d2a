// object_store.h - what the object store knows of itself while the process runs, and its end.
#pragma once

#include "database/connection.h"

#include "ce/store.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace platform::store {

// Only to be touched while the device's database is in use (database::DatabaseUse), which lets one thread in.
struct StoreState {
    std::unordered_map<CEOID, unsigned> openHandles;  // on each database; none is the same as 0
    std::uint64_t databasesDeleted = 0;               // a walk that began at another number is over
    std::uint64_t recordsRemoved = 0;                 // positions that were counted at another number no longer hold
    bool changeIsOpen = false;                        // between BeginStoreChange and EndStoreChange
    std::uint64_t changes = 0;                        // that were begun so
    DWORD changeFault = 0;                            // why the last one isn't on the disk
    std::u16string changedName;                       // of the database that it made last
    // Databases that stand under another folded name than their own. Looked for once: no call makes one.
    std::optional<std::unordered_map<CEOID, std::u16string>> misplaced;
};
[[nodiscard]] StoreState& storeState();

// Before each change: 0, or why the change of several calls that it would be a part of has come to nothing already.
[[nodiscard]] DWORD faultOfChange(database::Connection& connection);

// Closes all handles on databases and walks, with what they gathered on the disk, and undoes a change that is open.
// Before the device's database is closed.
void closeStore();

}  // namespace platform::store
