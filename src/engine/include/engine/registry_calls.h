// registry_calls.h - the platform's calls that write the registry to one file and read it back. Not every platform has
// them.
#pragma once

#include "ce/registry_file.h"

// Null where the platform doesn't have the call.
using RegistryFileCall = decltype(&RegCopyFile);
extern RegistryFileCall gRegCopyFile;
extern RegistryFileCall gRegRestoreFile;

// Looks both calls up. Called once at start.
void LookUpRegistryFileCalls();
