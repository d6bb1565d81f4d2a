// ce/registry_file.h - the whole registry as one file, and back.
//
// Programs look these up by name ("RegCopyFile", "RegRestoreFile"), since not every device has them.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

// Writes the whole registry to a file, replacing an old one: text in the REGEDIT form, UTF-16 (docs/format.md,
// "Registry file"). Nonzero on success, otherwise 0 with the last error of the file call that failed, 31 if the
// registry can't be read; no file is left then.
BOOL RegCopyFile(const WCHAR* path);

// Takes such a file over: it is gone from its place, and its content comes into force in place of the registry at the
// next start of the device, whole or not at all.
// Nonzero on success, otherwise 0 with the last error of the file call that failed (5 for a file that may not be
// deleted, 112 if the device's disk has no room), 31 without a device or for a file that is no whole registry: a copy
// of that one is kept aside. The file stays where it is then, and one that was taken over before still waits.
BOOL RegRestoreFile(const WCHAR* path);
