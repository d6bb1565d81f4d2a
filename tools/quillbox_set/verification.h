// verification.h - `quillbox-set verify`.
#pragma once

#include "archive/set_search.h"

namespace quillbox_set {

// Prints each fault with its item, and a summary. Returns the exit code.
int verifySet(const archive::SetFiles& files, bool json);

// The same for several sets: each fault with its set, and a line for each set. JSON is one object a line.
int verifySets(const archive::FoundSets& found, bool json);

}  // namespace quillbox_set
