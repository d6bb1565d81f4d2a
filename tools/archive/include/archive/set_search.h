// set_search.h - finds the sets that a user means.
#pragma once

#include "archive/set_files.h"

#include <string>
#include <vector>

namespace archive {

struct FoundSets {
    std::vector<SetFiles> sets;       // each once, in the order of the arguments and of the names in a folder
    std::vector<std::string> faults;  // sentences about arguments without sets and folders that can't be read
};

// Each argument is a list file, a data file, their path without the ending, or a folder with sets (set_folder.h). With
// `recursive` a folder is searched in depth. Links to folders inside of it are not followed, so the search ends.
FoundSets searchSets(const std::vector<std::string>& where, bool recursive);

// The sets in a folder of the host that the name space of this process shows as `shownAs`, without those that a link
// shows from another folder.
FoundSets searchShownFolder(const std::string& folder, const std::u16string& shownAs);

// The path of the list file, which names the set in all output.
std::string pathOf(const SetFiles& set);

}  // namespace archive
