// mounts.h - the list of mounted folders. It doesn't change while the program runs, so reading it takes no lock. The
// folders live until forgetMounts, so whatever uses them between keeps plain pointers: a counter of references would
// be written by every thread that resolves a path.
#pragma once

#include "mounted_folder.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace platform::file {

// The root folder; null before there is one.
MountedFolder* rootMount();

// The folder mounted in the root under that name; null if there is none.
MountedFolder* findMount(std::u16string_view name);

// The nth folder mounted in the root, from 0; null after the last.
MountedFolder* mountAt(std::size_t index);

// Whether a mounted folder hides the entry of the root folder that has this name on the host.
bool hiddenByMount(std::string_view hostName);

// Adds a folder; one without a name becomes the root.
void insertMount(std::unique_ptr<MountedFolder> added);

// No call on a file is in progress, and no file or search is open.
void forgetMounts();

}  // namespace platform::file
