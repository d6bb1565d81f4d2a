// demonstration.h - fills a fresh device with the content of res/demonstration, so that there is something to back up.
#pragma once

#include <filesystem>

namespace platform::device {

// Writes the files below the empty `folder`, in "object-store" and in a card in "cards": about 1 MB in all. Flushes
// nothing. Where the host keeps no extended attributes there are no files in ROM. Throws a Refusal on failure.
void writeDemonstrationFiles(const std::filesystem::path& folder);

// Sets the values of the open registry and makes the databases of the open store. False if one can't be written.
[[nodiscard]] bool fillDemonstrationStore();

}  // namespace platform::device
