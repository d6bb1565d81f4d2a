// entries.h - attributes, making and removing of files and folders, without opening them.
#pragma once

#include "device_path.h"
#include "host_calls.h"

#include "ce/types.h"

namespace platform::file {

class OpenFiles;

struct Attributes {
    DWORD error = 0;
    DWORD bits = 0;
};

[[nodiscard]] Attributes attributesAt(const HostPlace& place);

// 0 or the error.
[[nodiscard]] DWORD makeFolderAt(const HostPlace& place);
[[nodiscard]] DWORD removeFolderAt(const HostPlace& place);

struct Deleted {
    DWORD error = 0;
    bool isOpenHere = false;  // the error is that this process has the file open
};

// Deletes a file that isn't open in this process.
[[nodiscard]] Deleted deleteFileAt(const HostPlace& place);

// Why the rules of the name space forbid the deletion of the entry; 0 if they don't. `folder` holds the entry. Needs
// the table's lock.
[[nodiscard]] DWORD deletionError(const HostPlace& place, int folder, const HostStatus& status, const OpenFiles& table);

}  // namespace platform::file
