// set_folder.h - finds the sets in a folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace archive {

struct SetFolder {
    std::string path;
    std::vector<std::string> lists;  // names of list files, sorted
    bool readFailed = false;         // the folder may have more sets
    std::string reason;              // of the failure
};

// Returns the sets in the folder, without those in its subfolders.
SetFolder listsIn(const std::string& folder);

// Returns the sets in the folder. If the folder has none, returns the sets in its subfolder QUILBOX. Returns nothing if
// `argument` isn't a folder.
std::optional<SetFolder> findSets(const std::string& argument);

// Returns a message such as "this folder can't be read (Permission denied): /card/QUILBOX". It is safe to print.
std::string notRead(const SetFolder& folder);

// Returns the message for a folder in which no set was found, because it has none or can't be read. It is safe to
// print.
std::string noSetIn(const SetFolder& folder);

// Returns the message for a user who named a folder where a set is needed: "/card/QUILBOX is a folder; name one of its
// sets: QLBX0001.QLT, QLBX0002.QLT". It is safe to print.
std::string setIsWanted(const SetFolder& folder);

}  // namespace archive
