// file_stamp.h - makes the stamp of a file, and compares a file with its stamp (ce/file_stamp.h).
#pragma once

#include "host_calls.h"

#include "ce/file_stamp.h"

#include <ctime>

namespace platform::file {

// Without wasAlone. `asked` is the time on this machine's clock just before the host was asked for `status`.
FileStamp stampOf(const HostStatus& status, const timespec& asked);

// Whether it is the same file with the same length and time of writing.
bool hasSameContent(const FileStamp& stamp, const HostStatus& status);

// Whether the time of change is the same, too. A program can set back the time of writing, but not this one.
bool isUnchanged(const FileStamp& stamp, const HostStatus& status);

}  // namespace platform::file
