// comparison.h - `quillbox-set diff`: what has changed between two sets.
#pragma once

#include "archive/set_files.h"

namespace quillbox_set {

inline constexpr int exitSame = 0;
inline constexpr int exitDifferent = 1;
inline constexpr int exitTrouble = 2;  // also damage

// Prints a line for each item that was added, removed or changed, and what has changed inside. `patch`: text files as
// unified diffs. Returns one of the exit codes above. An index of the newer set is in memory, of some 60 bytes for an
// item, and one of each database that differs, of 32 bytes for a record. The registry is in memory with short values.
int compareSets(const archive::SetFiles& older, const archive::SetFiles& newer, bool patch, bool json);

}  // namespace quillbox_set
