// mounts.h - the list of mounted folders. Removable ones come and go while the program runs, and their references count
// their users. The others stay until forgetMounts. References to them count nothing: a counter would be written by
// every thread that resolves a path. Any thread.
#pragma once

#include "attributes.h"
#include "mounted_folder.h"

#include "file/removable.h"

#include "ce/types.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform::file {

// What a name of the root refers to.
struct FoundMount {
    std::shared_ptr<MountedFolder> folder;
    DWORD error = 0;  // with a name that a removable folder has or had, if the folder can't be used
};

// The root folder; null before there is one.
std::shared_ptr<MountedFolder> rootMount();

// The folder mounted in the root under that name; null without an error if there is none. Opens a removable folder.
FoundMount findMount(std::u16string_view name);

// The names of all mounted folders but the root: first those that stay, each in the order in which they were added.
std::vector<std::u16string> mountNames();

// The folders that can have changes: those that stay, those that are open, and removed ones until their changes were
// reported.
std::vector<std::shared_ptr<MountedFolder>> mountsToFlush();

// Whether a mounted folder hides the entry of the root folder that has this name on the host.
bool hiddenByMount(std::string_view hostName);

// Adds a folder; one without a name becomes the root.
void insertMount(std::unique_ptr<MountedFolder> added);

// False if a folder has the name.
[[nodiscard]] bool insertRemovable(Removable added, const FileKey& identity);

// False if no removable folder has the name.
[[nodiscard]] bool removeRemovable(std::u16string_view name);

// Closes removable folders that no call has looked up for this long, unless a file or search is open in them, a
// temporary file is declared there, or they have changes that weren't flushed.
void closeUnused(std::chrono::milliseconds time);

// No call on a file is in progress, and no file or search is open.
void forgetMounts();

}  // namespace platform::file
