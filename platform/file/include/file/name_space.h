// name_space.h - sets up the device's name space: the tree of all paths of the device.
//
// The name space consists of folders of the host (the Linux system). One of them is the root `\`. The others (cards,
// folders of the user) appear in the root under their names. Such a mounted folder hides an entry of the same name in
// the root folder. Folders can be added at any time. Only removable folders can be removed before removeAllMounts. All
// functions can be called on any thread, unless their comment says otherwise.
#pragma once

#include "file/removable.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::file {

// Prepares the process for file calls. Changes the umask so that the owner can read and write the files that the
// process makes. Also makes the process ignore SIGIO, unless an action for it is set. The host sends this signal when
// another process breaks a lease of this process, and by default the signal ends the process. addMount calls this
// function. Call it directly only if the process makes files before addMount. No other thread may make files during the
// call.
void prepareProcess();

// One host folder in the name space.
struct Mount {
    std::u16string name;                    // the folder's name in the root; empty for the root itself
    int folder = -1;                        // an open descriptor of the host folder; addMount takes it over
    bool card = false;                      // the folder has FILE_ATTRIBUTE_TEMPORARY
    std::optional<std::uint64_t> capacity;  // bytes; limits the total length of its files, old and new ones together
};

// Adds a folder. If it has a capacity, the call adds up the bytes of its files. Returns false if the name is taken or
// invalid, or if the folder can't be read. In each of these cases the call closes `mount.folder`.
[[nodiscard]] bool addMount(Mount mount);

// Adds a removable folder. Each search of the root that begins later finds the folder, as long as it can be opened.
// Returns false if the name is taken or invalid, or if the host reports no folder at `place`.
[[nodiscard]] bool addRemovable(Removable removable);

// Removes a removable folder. From then on, each call on its paths and each write or flush of its open files fails with
// ERROR_NOT_READY. The flush fails even if the bytes were written before the removal. After the removal, another folder
// can be added under the same name. Returns false if no removable folder was added under this name.
bool removeRemovable(const std::u16string& name);

// Closes the descriptors of each removable folder that meets three conditions. It has no open file, search or declared
// temporary file. No call has used it for `time`. All changes in it are flushed. If the folder was removed
// (removeRemovable), or if a flush has found that its medium was unmounted, only the first condition counts.
void closeUnusedFolders(std::chrono::milliseconds time);

// Closes all open files and searches, and removes all folders. Call it only while no other thread makes calls on files.
void removeAllMounts();

// Returns the length of all files of a mounted folder together: their length when the folder was added, plus what this
// process has added since then, minus what it has deleted. Empty if there is no such folder or if it has no capacity.
std::optional<std::uint64_t> usedBytes(const std::u16string& mountName);

// Finds the temporary files (DeclareTemporaryFile) that a killed process left in the root folder. Moves them to the
// folder "left-behind" of `deviceFolder`, an open descriptor. Returns the names of the moved files. A moved file
// replaces a file of the same name in that folder. The files aren't deleted, because another program may have written
// to them. Call this function before the program starts, while only this process has the device open.
[[nodiscard]] std::vector<std::u16string> setLeftTemporariesAside(int deviceFolder);

// The descriptor of the root folder; -1 before there is one.
int rootFolder();

}  // namespace platform::file
