// database_walk.h - the object to which a handle of CeFindFirstDatabase refers: an enumeration of databases.
#pragma once

#include "kernel/handle_table.h"

#include "ce/store.h"

namespace platform::store {

// Use it only while a database::DatabaseUse lives.
struct DatabaseWalk final : kernel::Object {
    DWORD type = 0;                      // 0: any type
    CEOID last = 0;                      // the database returned last
    std::uint64_t databasesDeleted = 0;  // StoreState::databasesDeleted when the walk began
};

}  // namespace platform::store
