// explanation.h - `quillbox-set explain`: writes files that explain the sets to somebody without this program.
#pragma once

#include "archive/set_search.h"

namespace quillbox_set {

// Writes README.TXT and QLBXREAD.PY into each folder that contains one of the sets, and prints a line for each file. If
// such a file exists with different content, it is replaced only with `force`. Returns the exit code.
int explainSets(const archive::FoundSets& found, bool force);

}  // namespace quillbox_set
