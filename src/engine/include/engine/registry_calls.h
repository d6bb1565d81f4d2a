// registry_calls.h - declares pointers to the two platform calls RegCopyFile, which writes the registry to a file, and
// RegRestoreFile, which restores it from such a file. Not every device has these calls, so they are looked up by name.
#pragma once

#include "ce/registry_file.h"

// Null if the device doesn't have the call.
using RegistryFileCall = decltype(&RegCopyFile);
extern RegistryFileCall gRegCopyFile;
extern RegistryFileCall gRegRestoreFile;

// Looks up the two calls and sets the pointers. Called once, at the start of the program.
void LookUpRegistryFileCalls();
