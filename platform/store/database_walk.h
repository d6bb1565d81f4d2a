// database_walk.h - what a handle of CeFindFirstDatabase stands for.
#pragma once

#include "kernel/handle_table.h"

#include "ce/store.h"

namespace platform::store {

// Touched while the device's database is in use.
struct DatabaseWalk final : kernel::Object {
    DWORD type = 0;                      // 0: any
    CEOID last = 0;                      // that was delivered
    std::uint64_t databasesDeleted = 0;  // when it began
};

}  // namespace platform::store
