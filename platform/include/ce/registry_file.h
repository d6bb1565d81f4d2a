// ce/registry_file.h - writes the whole registry to a file, and replaces the registry by such a file.
//
// Not every device has these functions. So programs look them up by name ("RegCopyFile", "RegRestoreFile").
#pragma once

#include "ce/error.h"
#include "ce/types.h"

// Writes the whole registry to the file `path`. If a file exists there, it is replaced. The file is text in the REGEDIT
// format, UTF-16 (docs/format.md, "Registry file"). Returns nonzero on success and 0 on failure. The last error is that
// of the file call that failed, or 31 if the registry can't be read. After a failure there is no file at `path`, except
// an old file that couldn't be replaced or an incomplete file that couldn't be deleted.
BOOL RegCopyFile(const WCHAR* path);

// Stores the content of a file of this format in the device's folder on the host, and removes the file from `path`. At
// the next start of the device, this content replaces the registry, completely or not at all. Nonzero on success,
// otherwise 0. The last error is that of the file call that failed. For example, it is 5 for a file that may not be
// deleted, and 112 if the device's disk has no room. It is 31 if no device is open, or if the file doesn't contain a
// whole registry. In the second case a copy of the file is kept in the device's folder, as registry.refused.
//
// After any failure the file stays at `path`. If an earlier call has stored content, this content normally stays, too,
// and replaces the registry at the next start. It is lost only if the failure came after the new content had been
// stored in its place.
BOOL RegRestoreFile(const WCHAR* path);
