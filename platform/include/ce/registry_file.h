// ce/registry_file.h - writes the whole registry to a file, and replaces the registry by such a file.
//
// Programs look these up by name ("RegCopyFile", "RegRestoreFile"), since not every device has them.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

// Writes the whole registry to a file and replaces an old one. The file is text in the REGEDIT format, UTF-16
// (docs/format.md, "Registry file"). Nonzero on success, otherwise 0 with the last error of the file call that failed,
// or 31 if the registry can't be read. Then there is no file.
BOOL RegCopyFile(const WCHAR* path);

// Takes such a file over: removes it from `path`. At the next start of the device its content replaces the registry,
// completely or not at all.
// Nonzero on success, otherwise 0 with the last error of the file call that failed (5 for a file that may not be
// deleted, 112 if the device's disk has no room), 31 without a device or for a file that isn't a whole registry, of
// which a copy is kept. After a failure the file stays at `path`, and a file that was taken over earlier still replaces
// the registry at the next start.
BOOL RegRestoreFile(const WCHAR* path);
