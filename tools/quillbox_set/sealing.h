// sealing.h - `quillbox-set seal`: writes the file with the checksums of a set.
#pragma once

#include "archive/set_search.h"

namespace quillbox_set {

// Seals each set that is sound, and prints a line for it. A set that was sealed before and has changed since is sealed
// again only with `force`. Returns the exit code.
int sealSets(const archive::FoundSets& found, bool force);

}  // namespace quillbox_set
