// rotation.h - which of several sets go by the rules of the user, and their removal (docs/archive.md, "prune").
#pragma once

#include "archive/keep_rules.h"
#include "archive/long_work.h"
#include "archive/set_files.h"

#include <string>
#include <vector>

namespace archive {

// A set and what becomes of it.
struct JudgedSet {
    SetFiles files;
    SetDate date;
    bool isSound;
    std::string reason;  // why it is kept: "daily, weekly", "the newest" or its damage. Empty: it goes.

    bool isToGo() const { return reason.empty(); }
};

// Checks every set and applies the rules to the sound ones. The newest sound set and every damaged set stay. The newest
// set comes first. No set may be open. `sets` must be all sets of the storage: one that is missing could be newer.
std::vector<JudgedSet> judgeSets(const std::vector<SetFiles>& sets, const KeepRules& rules, Progress& progress);

// Deletes the files of a set on the host. Whenever it is interrupted, no list is left without its data. Returns the
// reason of a failure, or an empty text.
std::string removeSet(const SetFiles& files);

}  // namespace archive
