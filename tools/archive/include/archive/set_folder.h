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

// The sets in the folder itself.
SetFolder listsIn(const std::string& folder);

// The sets in the folder. If it has none: the sets in its subfolder QUILBOX. Nothing if `argument` isn't a folder.
std::optional<SetFolder> findSets(const std::string& argument);

// "this folder can't be read (Permission denied): /card/QUILBOX". It is safe to print.
std::string notRead(const SetFolder& folder);

// The message for a folder without sets. It is safe to print.
std::string noSetIn(const SetFolder& folder);

// The message for a user who named a folder where a set is needed: "/card/QUILBOX is a folder; name one of its sets:
// QLBX0001.QLT, QLBX0002.QLT". It is safe to print.
std::string setIsWanted(const SetFolder& folder);

}  // namespace archive
