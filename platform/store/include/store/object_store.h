// object_store.h - the end of the object store in this process. Its calls are in ce/store.h.
#pragma once

namespace platform::store {

// Closes all handles on databases and walks, writes their gathered changes to the disk, and undoes a change that
// BeginStoreChange began and EndStoreChange didn't end. Call it before the device's database is closed.
void closeStore();

}  // namespace platform::store
