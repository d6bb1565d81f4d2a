// staged_registry.h - a registry file that waits beside the device's database for the next start.
//
// It is there whole or not at all: it grows under another name.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <filesystem>
#include <string>

namespace platform::registry {

// Where files are staged from now on; empty: nowhere, since no registry is open.
void setStagingFolder(const std::filesystem::path& folder);

// Copies an open file, from its beginning, in place of one staged before. 0 when it is on the disk. 31 for one that is
// no whole registry: it is kept aside as "registry.refused", and what was staged before still is. Otherwise the error,
// and it is in neither place.
[[nodiscard]] DWORD stageRegistry(HANDLE file);

// Takes a staged file away again.
void unstageRegistry();

// Puts the file staged in `folder` in force, if there is one: in place of the whole registry in the open database, in
// one transaction. One that is no whole registry is kept aside likewise, the registry stays as it is, and `sentence`
// warns of it.
// False with a sentence for the user if the disk fails: the registry is the old one then, and the file still waits.
[[nodiscard]] bool enforceStagedRegistry(const std::filesystem::path& folder, std::string& sentence);

}  // namespace platform::registry
