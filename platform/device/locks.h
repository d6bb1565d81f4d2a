// locks.h - what keeps two processes off one device and two devices off one card, and what a device's lock remembers.
#pragma once

#include "host/descriptor.h"

#include <filesystem>

namespace platform::device {

using host::Descriptor;

// Takes the device for as long as the descriptor lives. Throws a Refusal if another process has it, or if the
// folder can't be written to.
[[nodiscard]] Descriptor lockDevice(const std::filesystem::path& folder);

// The same for a card's folder, of which `opened` is a descriptor. A host that can't lock folders, as some
// network shares, gives a card without a lock.
void lockCard(const Descriptor& opened, const std::filesystem::path& folder);

// That a device has had a database is noted in the file of its lock: so it can be told when that is lost.
[[nodiscard]] bool hadDatabase(const Descriptor& deviceLock);
void noteDatabase(const Descriptor& deviceLock);

}  // namespace platform::device
