// object_store.h - closes the object store. The store's other calls are in ce/store.h.
#pragma once

namespace platform::store {

// Closes all handles of databases and of enumerations (CeFindFirstDatabase). If changes that were made through these
// handles aren't on the disk yet, writes them to the disk. But if EndStoreChange hasn't been called after
// BeginStoreChange, undoes all changes since BeginStoreChange. Call closeStore before the device's database file is
// closed.
void closeStore();

}  // namespace platform::store
