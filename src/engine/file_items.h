// file_items.h - the files of a backup.
#pragma once

#include "item_storing.h"

// Stores each file of gFileList, in its order, on a progress window of its own. A failed file is told in the log, and
// the run goes on.
void BackUpFiles(BackupRun& run);
