// salvage.h - `quillbox-set salvage`: recovers items from a data file that is damaged or whose list is lost.
#pragma once

#include <string>
#include <vector>

namespace quillbox_set {

struct SalvageOptions {
    std::string file;                // the data file
    std::string folder;              // the folder for the recovered files; it must be missing or empty
    std::vector<std::string> lists;  // list files that may belong to the data file
    std::string set;                 // path of the new set without an ending. Empty: no new set is written.
    bool unproven = false;           // the new set also gets whole streams that aren't proven (stream_proof.h)
    bool json = false;
};

// Returns the exit code: exitGood only if everything in the file is complete.
int salvage(const SalvageOptions& options);

}  // namespace quillbox_set
