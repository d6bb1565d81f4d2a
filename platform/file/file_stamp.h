// file_stamp.h - makes the stamp of a file, and compares a file with its stamp (ce/file_stamp.h).
#pragma once

#include "host_calls.h"

#include "ce/file_stamp.h"

#include <ctime>

namespace platform::file {

// Makes a stamp from `status`. The stamp's field wasAlone is FALSE until the caller sets it. `asked` is the time on
// this machine's clock just before `status` was read.
FileStamp stampOf(const HostStatus& status, const timespec& asked);

// Whether `status` belongs to the file of the stamp, and the file has the same length and write time as in the stamp.
bool hasSameContent(const FileStamp& stamp, const HostStatus& status);

// Like hasSameContent, but the change time must be the same, too. A program can set back the write time, but not the
// change time.
bool isUnchanged(const FileStamp& stamp, const HostStatus& status);

}  // namespace platform::file
