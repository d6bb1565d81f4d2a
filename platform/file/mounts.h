// mounts.h - keeps the list of mounted folders. A removable folder stays in the list after it was removed from the
// device, so that its paths fail. If it left the list, the same paths would lead to entries of the root folder. Only
// forgetMounts takes folders out of the list. Reading the list takes no lock. Unless a comment says otherwise, the
// functions can be called on any thread.
#pragma once

#include "mounted_folder.h"

#include <memory>
#include <string_view>
#include <vector>

namespace platform::file {

// What a name in the root folder refers to.
struct FoundMount {
    MountUse folder;
    DWORD error = 0;  // not 0 if a removable folder has this name, but was removed or can't be opened
};

// The root folder; null before there is one.
MountedFolder* rootMount();

// Returns the folder that is mounted in the root under that name, and opens it if it is removable. If there is none,
// the folder is null and the error is 0.
FoundMount findMount(std::u16string_view name);

// The folders mounted in the root, in the order in which they were added. The returned list never changes. When a
// folder is added, a new list is made.
const std::vector<MountedFolder*>& mountsInRoot();

// Whether the entry `hostName` of the root folder is hidden, because a folder was mounted under the same name. The
// entry stays hidden after the mounted folder was removed.
bool hiddenByMount(std::string_view hostName);

// Adds a folder. A folder without a name becomes the root. Call this function only once for the root. For any other
// folder, returns false if there is a folder of that name already, unless that folder was removed.
[[nodiscard]] bool insertMount(std::unique_ptr<MountedFolder> added);

// Removes all folders. Call it only while no call on a file is in progress, and no file or search is open.
void forgetMounts();

}  // namespace platform::file
