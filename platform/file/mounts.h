// mounts.h - the list of mounted folders. Folders are only added to it, and live until forgetMounts: a removable one
// that was taken out stays in the list, so that its paths don't lead to the root folder. Reading takes no lock. Any
// thread.
#pragma once

#include "mounted_folder.h"

#include <memory>
#include <string_view>
#include <vector>

namespace platform::file {

// What a name of the root refers to.
struct FoundMount {
    MountUse folder;
    DWORD error = 0;  // with a name that a removable folder has or had, if the folder can't be used
};

// The root folder; null before there is one.
MountedFolder* rootMount();

// The folder mounted in the root under that name; null without an error if there is none. Opens a removable folder.
FoundMount findMount(std::u16string_view name);

// The folders mounted in the root, in the order in which they were added. It stays as it is when others are added.
const std::vector<MountedFolder*>& mountsInRoot();

// Whether a mounted folder hides the entry of the root folder that has this name on the host.
bool hiddenByMount(std::string_view hostName);

// Adds a folder; one without a name becomes the root. False if a folder that isn't gone has the name.
[[nodiscard]] bool insertMount(std::unique_ptr<MountedFolder> added);

// No call on a file is in progress, and no file or search is open.
void forgetMounts();

}  // namespace platform::file
