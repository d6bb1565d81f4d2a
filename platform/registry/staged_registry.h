// staged_registry.h - a registry file beside the device's database, which replaces the registry at the next start.
//
// The file is written under another name and renamed when it is whole, so a staged file is never a part of one.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <filesystem>
#include <string>

namespace platform::registry {

// Sets the folder of staged files. An empty path means that no registry is open, so nothing can be staged.
void setStagingFolder(const std::filesystem::path& folder);

// Stages a copy of an open file, from its beginning, and replaces the one staged before. 0 when the copy is on the
// disk. 31 for a file that isn't a whole registry: the copy is kept as "registry.refused", and the file staged before
// stays. After any other error there is no copy.
[[nodiscard]] DWORD stageRegistry(HANDLE file);

// Deletes the staged file.
void unstageRegistry();

// Replaces the registry in the open database by the file staged in `folder`, if there is one, in one transaction. A
// file that isn't a whole registry is renamed to "registry.refused". Then the registry stays as it is, and `sentence`
// is a warning. False with a sentence for the user if the disk fails: then the registry and the staged file stay as
// they are.
[[nodiscard]] bool enforceStagedRegistry(const std::filesystem::path& folder, std::string& sentence);

}  // namespace platform::registry
