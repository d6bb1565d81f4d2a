// backup_items.h - stores the items of a backup run.
#pragma once

#include "backup_entry.h"

// Stores the marked items in the set: first the files and then the databases, in the order of their lists, then the
// registry. If an item fails, reports it (ReportItem in ce/outcome.h) and continues with the next one. The files use
// the progress window of the run. The databases get a new window, which is still open when the call returns.
void BackUpItems(BackupRun& run);
