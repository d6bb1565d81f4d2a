// comparison.h - `quillbox-set diff`: prints what has changed between two sets.
#pragma once

#include "archive/set_files.h"

namespace quillbox_set {

inline constexpr int exitSame = 0;
inline constexpr int exitDifferent = 1;
inline constexpr int exitTrouble = 2;  // something can't be read, or an item is damaged

// Prints a line for each item that was added, removed or changed, and what has changed in the item. With `patch`, also
// prints the changes of text files as unified diffs. Returns one of the exit codes above. An index of the newer set is
// in memory, with some 60 bytes for each item. During the comparison of two databases, 32 bytes for each record and the
// texts of the records that differ are in memory too. During the comparison of two registries, all keys and values are
// in memory, with long values shortened.
int compareSets(const archive::SetFiles& older, const archive::SetFiles& newer, bool patch, bool json);

}  // namespace quillbox_set
