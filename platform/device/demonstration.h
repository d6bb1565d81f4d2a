// demonstration.h - content for a fresh device that is worth a backup: the same on every device.
#pragma once

#include <filesystem>

namespace platform::device {

// Fills an empty object store and makes a card in `cards`, about 1 MB in all. Nothing is flushed.
// Where the host keeps no extended attributes there are no files in ROM. Throws a Refusal on failure.
void writeDemonstrationFiles(const std::filesystem::path& objectStore, const std::filesystem::path& cards);

// Fills the open registry. False if it can't be written.
[[nodiscard]] bool fillDemonstrationRegistry();

}  // namespace platform::device
