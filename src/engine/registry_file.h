// registry_file.h - the registry item of a backup.
#pragma once

#include "item_storing.h"

// Stores the registry if it is marked. A failure is told in the log alone.
void BackUpRegistry(BackupRun& run);
