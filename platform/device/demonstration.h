// demonstration.h - fills a fresh device with the content of res/demonstration, so that there is something to back up.
#pragma once

#include <filesystem>

namespace platform::device {

// Writes the files, about 1 MB in all, below the empty `folder`: to "object-store" and to a card in "cards". Doesn't
// flush them. If the host's file system has no extended attributes, the files in ROM are left out. Throws a Refusal on
// failure.
void writeDemonstrationFiles(const std::filesystem::path& folder);

// Writes the demonstration's values to the open registry, and makes its databases in the open store. Returns false if a
// value or a database can't be written.
[[nodiscard]] bool fillDemonstrationStore();

}  // namespace platform::device
