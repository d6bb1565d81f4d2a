// restored_items.h - the databases and the registry of a restore.
#pragma once

#include "stream_taking.h"

// Rebuilds each database of gDatabaseList, in its order, on a progress window of its own, which stays open. Whether one
// that exists is replaced, RestoreDatabase asks the user itself. A failed item is passed over in silence.
void RestoreDatabases(RestoreRun& run);

// Hands the registry of the set over to the platform, if it is marked, and tells the user what is left to do.
void RestoreRegistry(RestoreRun& run);
