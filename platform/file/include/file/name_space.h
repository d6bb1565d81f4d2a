// name_space.h - which folders of the host make up the device's one name space.
//
// The root `\` is one host folder; further folders (cards, folders of the user) appear in it by name.
// A mounted folder hides an entry of the same name in the root folder. Set up before the program
// starts, read by every file call.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::file {

// What files need of the process: whatever mask the user has, what is made is its owner's to read and write, and a
// lease that is broken doesn't end it. addMount does it; for what is made before. No other thread may make files
// meanwhile.
void prepareProcess();

// One host folder in the name space.
struct Mount {
    std::u16string name;                    // of its folder in the root; empty for the root itself
    int folder = -1;                        // an open descriptor of the host folder; the name space takes it over
    bool card = false;                      // its folder carries FILE_ATTRIBUTE_TEMPORARY
    std::optional<std::uint64_t> capacity;  // bytes that its files may hold together, what they hold now included
};

// Adds a folder. False if the name is taken or not usable as a name, or if the folder can't be read;
// the descriptor is closed then. Measures what the files hold if there is a capacity.
[[nodiscard]] bool addMount(Mount mount);

// Takes everything down again: closes every open file and search, forgets all mounts.
void removeAllMounts();

// Bytes that the files of a mounted folder with a capacity hold now; nothing for one without.
[[nodiscard]] std::optional<std::uint64_t> usedBytes(const std::u16string& mountName);

// Moves the temporary files that a killed process left in the root folder (DeclareTemporaryFile) to "left-behind" in
// the device's own folder, an open descriptor; a file of the same name that was left earlier is replaced there. Gives
// their names. They aren't deleted, since somebody may have written to them meanwhile. For the time before the program
// starts, while this process has the device to itself.
[[nodiscard]] std::vector<std::u16string> setLeftTemporariesAside(int deviceFolder);

// The descriptor of the root folder; -1 before there is one.
[[nodiscard]] int rootFolder();

}  // namespace platform::file
