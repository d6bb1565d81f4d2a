// name_space.h - sets up the folders of the host that make up the device's name space.
//
// The root `\` is one host folder; further folders (cards, folders of the user) appear in it by name. A mounted folder
// hides an entry of the same name in the root folder. Folders can be added at any time; only removable ones go before
// the end. Any thread, unless a call says otherwise.
#pragma once

#include "file/removable.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::file {

// Prepares the process for file calls: its owner can read and write the files that it makes, whatever the umask is, and
// a broken lease doesn't end it. addMount calls this. Call it directly only to make files before that. No other thread
// makes files during the call.
void prepareProcess();

// One host folder in the name space.
struct Mount {
    std::u16string name;                    // of its folder in the root; empty for the root itself
    int folder = -1;                        // an open descriptor of the host folder, which the name space then owns
    bool card = false;                      // the folder has FILE_ATTRIBUTE_TEMPORARY
    std::optional<std::uint64_t> capacity;  // bytes that its files can hold together, including the present ones
};

// Adds a folder. With a capacity, adds up the bytes of its files. False if the name is taken or isn't a valid name, or
// if the folder can't be read; the descriptor is closed then.
[[nodiscard]] bool addMount(Mount mount);

// Adds a removable folder, which a search of the root finds from then on. False if the name is taken or isn't a valid
// name, or if the folder isn't there.
[[nodiscard]] bool addRemovable(Removable removable);

// Removes a removable folder. From then on each call on its paths and each write to its open files fails with
// ERROR_NOT_READY, and so does a flush of what was written there before. A new folder can get the name. False if there
// is no such folder.
bool removeRemovable(const std::u16string& name);

// Closes the removable folders that no call has used for this long, and that have no open file.
void closeUnusedFolders(std::chrono::milliseconds time);

// Closes all open files and searches, and removes all folders. No other thread makes calls meanwhile.
void removeAllMounts();

// The bytes that the files of a folder with a capacity have now; empty without a capacity.
std::optional<std::uint64_t> usedBytes(const std::u16string& mountName);

// Moves the temporary files that a killed process left in the root folder (DeclareTemporaryFile) to the folder
// "left-behind" of `deviceFolder`, an open descriptor, and returns their names. A file of the same name there is
// replaced. They aren't deleted, since somebody may have written to them. Call it before the program starts, while this
// process alone has the device.
[[nodiscard]] std::vector<std::u16string> setLeftTemporariesAside(int deviceFolder);

// The descriptor of the root folder; -1 before there is one.
int rootFolder();

}  // namespace platform::file
