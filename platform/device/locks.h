// locks.h - locks a device, so that no second process opens it, and a card, so that no second device uses it. Also
// records in the device's lock file that the device has a database.
#pragma once

#include "host/descriptor.h"

#include <filesystem>

namespace platform::device {

using host::Descriptor;

// Locks the device until the descriptor is closed. Throws a Refusal if another process has locked it, or if the lock
// file in `folder` can't be created, opened for writing or locked.
[[nodiscard]] Descriptor lockDevice(const std::filesystem::path& folder);

// Locks the folder of a card. `opened` is its descriptor. Returns false and sets errno if another process has locked
// the folder. Some file systems, for example of network shares, can't lock folders. On such a file system the function
// returns true, and the card is used without a lock.
[[nodiscard]] bool tryLockCard(const Descriptor& opened);
// Like tryLockCard, but throws a Refusal instead of returning false.
void lockCard(const Descriptor& opened, const std::filesystem::path& folder);

// noteDatabase writes to the lock file that the device has a database. hadDatabase returns whether the lock file says
// so. A later start uses this to report that the database is missing.
[[nodiscard]] bool hadDatabase(const Descriptor& deviceLock);
void noteDatabase(const Descriptor& deviceLock);

}  // namespace platform::device
