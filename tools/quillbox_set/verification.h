// verification.h - `quillbox-set verify`: checks sets and prints their faults.
#pragma once

#include "archive/set_search.h"

namespace quillbox_set {

// Prints each fault with its item, and a summary. Returns the exit code.
int verifySet(const archive::SetFiles& files, bool json);

// Does the same for several sets. Prints each fault with the path of its set, and a summary line for each set that can
// be opened. JSON output is one object a line.
int verifySets(const archive::FoundSets& found, bool json);

}  // namespace quillbox_set
