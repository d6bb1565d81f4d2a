// verification.h - `quillbox-set verify`: holds a set to everything that docs/format.md says of it.
#pragma once

#include "set_files.h"

namespace quillbox_set {

// Prints each fault with the item that has it and a summary; returns the exit code.
[[nodiscard]] int verifySet(const MountedSet& set, bool json);

}  // namespace quillbox_set
