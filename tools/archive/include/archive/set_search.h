// set_search.h - finds the sets that a user means.
#pragma once

#include "archive/set_files.h"

#include <string>
#include <vector>

namespace archive {

struct FoundSets {
    std::vector<SetFiles> sets;       // each set once, in the order of the arguments and of the names in a folder
    std::vector<std::string> faults;  // sentences about arguments without sets and folders that can't be read
};

// Returns the sets of all arguments. Each argument is the path of a list file or data file, such a path without the
// extension, or a folder with sets (set_folder.h). With `recursive`, a folder is searched with all its subfolders. The
// search follows an argument that is a link to a folder. Inside a folder it skips all links to folders, so the search
// always ends.
FoundSets searchSets(const std::vector<std::string>& where, bool recursive);

// Returns the sets in a host folder that this process has mounted at the path `shownAs`. Leaves out a set whose list
// file is a link to a file in another folder.
FoundSets searchShownFolder(const std::string& folder, const std::u16string& shownAs);

// Returns the path of the list file. All output uses this path to name the set.
std::string pathOf(const SetFiles& set);

}  // namespace archive
