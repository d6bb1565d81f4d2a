// entries.h - calls on files and folders by their path, without a handle: reading attributes, making folders, deleting.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "open_files.h"

#include "ce/file_stamp.h"
#include "ce/types.h"

namespace platform::file {

struct Attributes {
    DWORD error = 0;
    DWORD bits = 0;
};

[[nodiscard]] Attributes attributesAt(const HostPath& path);

// Whether it is certain that nothing exists at the path.
[[nodiscard]] bool isNothingAt(const HostPath& path);

// Whether it is certain that the stamp was taken of the file at the path, and that the file still has the same bytes.
[[nodiscard]] bool isUnchangedAt(const HostPath& path, const FileStamp& stamp);

// Both return 0, or an error of CreateDirectoryW or RemoveDirectoryW.
[[nodiscard]] DWORD makeFolderAt(const HostPath& path);
[[nodiscard]] DWORD removeFolderAt(const HostPath& path);

struct Deleted {
    DWORD error = 0;
    bool isOpenHere = false;  // the deletion failed because this process has the file open
};

// Deletes a file. Fails if this process has the file open.
[[nodiscard]] Deleted deleteFileAt(const HostPath& path);

// Returns 0 if the entry may be deleted, otherwise the error. Folders, read-only files, ROM files, files that this
// process has open, and files for which storedAttributes fails may not be deleted. `folder` is a descriptor of the
// folder that contains the entry. The caller holds `openings` exclusively, so no thread of this process opens the file
// before the deletion.
[[nodiscard]] DWORD deletionError(const HostPath& path, int folder, const HostStatus& status, const OpenFiles& table)
    REQUIRES(table.openings()) EXCLUDES(table.mutex());

}  // namespace platform::file
