// backup_items.h - the items of a backup run.
#pragma once

#include "backup_entry.h"

// Stores what is marked into the set: the files, the databases, the registry, in the order of their lists. A failed
// item is reported and written to the log, and the run continues. The progress window of the files is that of the run;
// the databases get a window of their own, which stays open.
void BackUpItems(BackupRun& run);
