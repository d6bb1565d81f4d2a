// object_store.h - closes the object store. The store's other calls are in ce/store.h.
#pragma once

namespace platform::store {

// Closes all handles of databases and of enumerations (CeFindFirstDatabase). Writes the gathered changes of these
// handles to the disk. Undoes a change that BeginStoreChange began and EndStoreChange didn't end. Call it before the
// device's database file is closed.
void closeStore();

}  // namespace platform::store
