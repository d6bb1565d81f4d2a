// registry_calls.h - the calls that write the registry to a file and restore the registry from such a file. Not every
// platform has these calls.
#pragma once

#include "ce/registry_file.h"

// Null if the platform doesn't have the call.
using RegistryFileCall = decltype(&RegCopyFile);
extern RegistryFileCall gRegCopyFile;
extern RegistryFileCall gRegRestoreFile;

// Looks up both calls. Called once, at the start.
void LookUpRegistryFileCalls();
