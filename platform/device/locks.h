// locks.h - locks against two processes on one device and two devices on one card, and the note in a device's lock
// file.
#pragma once

#include "host/descriptor.h"

#include <filesystem>

namespace platform::device {

using host::Descriptor;

// Locks the device while the descriptor lives. Throws a Refusal if another process has locked it, or if the folder
// can't be written to.
[[nodiscard]] Descriptor lockDevice(const std::filesystem::path& folder);

// Locks a card's folder, of which `opened` is a descriptor. False, with errno, if another process has locked it. If the
// file system can't lock folders, as some network shares, the card is used without a lock.
[[nodiscard]] bool tryLockCard(const Descriptor& opened);
// Throws a Refusal in place of the result.
void lockCard(const Descriptor& opened, const std::filesystem::path& folder);

// The lock file notes that the device has had a database, so that a missing one can be reported.
[[nodiscard]] bool hadDatabase(const Descriptor& deviceLock);
void noteDatabase(const Descriptor& deviceLock);

}  // namespace platform::device
