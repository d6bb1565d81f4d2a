// verification.h - `quillbox-set verify`: checks that a set complies with docs/format.md.
#pragma once

#include "listed_set.h"

namespace quillbox_set {

// Prints each fault with its item, and a summary. Returns the exit code.
int verifySet(ListedSet& set, const MountedSet& files, bool json);

}  // namespace quillbox_set
