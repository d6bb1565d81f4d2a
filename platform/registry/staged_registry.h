// staged_registry.h - writes the staged file, a registry file beside the device's database. At the next start, its
// content replaces the registry.
//
// stageRegistry() first writes a file with another name, and renames this file when it is complete. So a staged file is
// always complete.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <filesystem>
#include <string>

namespace platform::registry {

// Sets the folder of staged files. An empty path means that no registry is open, so nothing can be staged.
void setStagingFolder(const std::filesystem::path& folder);

// Copies an open file, whose offset must be 0. The copy becomes the staged file and replaces an earlier one. Returns 0
// when the copy is on the disk. If the file isn't a whole registry, returns error 31, keeps the copy as
// "registry.refused" and leaves an earlier staged file unchanged. After any other failure the call deletes the copy and
// leaves an earlier staged file unchanged, with one exception: if only the flush of the folder fails, the copy has
// already replaced the earlier staged file. The call deletes the copy in this case, too, so no staged file is left.
[[nodiscard]] DWORD stageRegistry(HANDLE file);

// Deletes the staged file.
void unstageRegistry();

// If there is a staged file in `folder`, replaces the registry in the open database by its content, in one transaction.
// If the staged file isn't a whole registry, renames it to "registry.refused" and leaves the registry unchanged.
// `sentence` is then a warning. Returns false with a sentence for the user if a disk operation fails. After such a
// failure the registry is unchanged, and the staged file still exists. There is one exception: if only the deletion of
// the staged file, or the flush of this deletion, failed, the registry has been replaced.
[[nodiscard]] bool enforceStagedRegistry(const std::filesystem::path& folder, std::string& sentence);

}  // namespace platform::registry
