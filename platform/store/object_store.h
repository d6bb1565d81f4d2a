// object_store.h - what the object store knows of itself while the process runs, and its end.
#pragma once

#include "ce/store.h"

#include <cstdint>
#include <unordered_map>

namespace platform::store {

// Only to be touched while the device's database is in use (database::DatabaseUse), which lets one thread in.
struct StoreState {
    std::unordered_map<CEOID, unsigned> openHandles;  // on each database that has some
    std::uint64_t databasesDeleted = 0;               // a walk that began at another number is over
    std::uint64_t recordsRemoved = 0;                 // positions that were counted at another number no longer hold
};
[[nodiscard]] StoreState& storeState();

// Closes all handles on databases and walks, with what they gathered on the disk. Before the device's database
// is closed.
void closeStore();

}  // namespace platform::store
