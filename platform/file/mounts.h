// mounts.h - the list of mounted folders. It doesn't change while the program runs, so reading it takes no lock.
#pragma once

#include "mounted_folder.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace platform::file {

// The root folder; null before there is one.
std::shared_ptr<MountedFolder> rootMount();

// The folder mounted in the root under that name; null if there is none.
std::shared_ptr<MountedFolder> findMount(std::u16string_view name);

// The nth folder mounted in the root, from 0; null after the last.
std::shared_ptr<MountedFolder> mountAt(std::size_t index);

// Whether a mounted folder hides the entry of the root folder that has this name on the host.
bool hiddenByMount(std::string_view hostName);

// Adds a folder; one without a name becomes the root.
void insertMount(std::shared_ptr<MountedFolder> added);

void forgetMounts();

}  // namespace platform::file
