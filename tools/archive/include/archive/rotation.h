// rotation.h - decides by the user's rules which of several sets to remove, and removes a set (docs/archive.md,
// "prune").
#pragma once

#include "archive/keep_rules.h"
#include "archive/long_work.h"
#include "archive/set_files.h"

#include <string>
#include <vector>

namespace archive {

// A set, and the decision on it.
struct JudgedSet {
    SetFiles files;
    SetDate date;
    bool isSound;
    std::string reason;  // why the set is kept, such as "daily, weekly"; empty if it is to be removed

    bool isToGo() const { return reason.empty(); }
};

// Checks every set and applies the rules to the sound ones. The newest sound set and every damaged set are kept. In the
// result the newest set comes first. The caller must have no set open. `sets` must contain all sets of the storage,
// because a set that the caller left out could be the newest one.
std::vector<JudgedSet> judgeSets(const std::vector<SetFiles>& sets, const KeepRules& rules, Progress& progress);

// Deletes the files of a set on the host. Even if the process is killed during the call, no list file is left without
// its data file. Returns the reason of a failure, or an empty text.
std::string removeSet(const SetFiles& files);

}  // namespace archive
