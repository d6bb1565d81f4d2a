// pruning.h - `quillbox-set prune`: removes sets by rules, to free their numbers.
#pragma once

#include "archive/keep_rules.h"
#include "archive/set_search.h"

namespace quillbox_set {

// Checks every set, applies the rules to the undamaged sets, and removes those that no rule keeps. The newest undamaged
// set and every damaged set stay. Prints a line for each set. With `dryRun`, removes nothing. If `found` has faults,
// only prints these faults. Returns the exit code.
int pruneSets(const archive::FoundSets& found, const archive::KeepRules& rules, bool dryRun, bool json);

}  // namespace quillbox_set
