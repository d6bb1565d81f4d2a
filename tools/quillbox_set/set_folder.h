// set_folder.h - the sets that lie in a folder, for who doesn't know their names.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillbox_set {

struct SetFolder {
    std::string path;
    std::vector<std::string> lists;  // names of list files, sorted
    bool readFailed = false;         // there may be more
};

// The sets of the folder itself; if it has none, those of the folder QUILBOX in it. Nothing if `argument` is no folder.
[[nodiscard]] std::optional<SetFolder> findSets(const std::string& argument);

// Prints for each set the path of its list file and its comment's first line; returns the exit code.
[[nodiscard]] int listSets(const SetFolder& folder, bool json);

// "/card/QUILBOX is a folder; name one of its sets: QLBX0001.QLT, QLBX0002.QLT", as text for the screen.
[[nodiscard]] std::string setIsWanted(const SetFolder& folder);

}  // namespace quillbox_set
