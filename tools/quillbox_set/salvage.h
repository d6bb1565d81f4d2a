// salvage.h - `quillbox-set salvage`: gets items back out of a data file whose list is lost, or that is damaged.
#pragma once

#include <string>
#include <vector>

namespace quillbox_set {

struct SalvageOptions {
    std::string file;                // the data file
    std::string folder;              // where the files go; missing or empty
    std::vector<std::string> lists;  // list files that may belong to it
    std::string set;                 // path of a new set without its ending. Empty: none.
    bool unproven = false;           // the new set also takes what is whole but unproven
    bool json = false;
};

// Returns the exit code: exitGood only if everything in the file is complete.
int salvage(const SalvageOptions& options);

}  // namespace quillbox_set
