// registry_file.h - the registry as one file: the platform's two entry points, and the registry item of a backup.
#pragma once

#include "item_storing.h"

#include "ce/registry_file.h"

// Looked up at start; null if the platform doesn't have them.
using RegistryFileCall = decltype(&RegCopyFile);
extern RegistryFileCall gRegCopyFile;
extern RegistryFileCall gRegRestoreFile;

// Asks the platform for both.
void LookUpRegistryFileCalls();

// Stores the registry if it is marked. A failure is told in the log alone.
void BackUpRegistry(BackupRun& run);
