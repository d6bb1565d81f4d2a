// full_backup.h - what goes into a backup of everything.
#pragma once

#include "ce/types.h"

// Asks what to include, lists it from the whole device in place of whatever was marked, runs the backup, and leaves the
// lists empty. 0 when the dialog was cancelled, which changes nothing; otherwise 1.
DWORD RunFullBackup();
