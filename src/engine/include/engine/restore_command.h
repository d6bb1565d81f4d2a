// restore_command.h - finds the sets on the device and its cards, lets the user choose one, and restores it.
#pragma once

#include "engine/restore_run.h"

// Only the low 16 bits of `mode` count (RestoreFull, RestorePartial). A set is found by the name of its list file
// alone, wherever it lies. Once a list is loaded the item lists end empty, whatever was marked; gRegistryMarked is
// always as it was before. 0 when there is no list file, otherwise 1.
DWORD RunRestore(DWORD mode);
