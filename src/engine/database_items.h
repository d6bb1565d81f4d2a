// database_items.h - the databases of a backup.
#pragma once

#include "item_storing.h"

// Stores each database of gDatabaseList through its image, in the list's order, on a progress window of its own, which
// stays open. A failed database is told in the log, and the run goes on.
void BackUpDatabases(BackupRun& run);
