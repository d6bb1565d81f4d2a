// sealing.h - `quillbox-set seal`: writes the file with the checksums of a set.
#pragma once

#include "archive/set_search.h"

namespace quillbox_set {

// Seals each undamaged set that isn't sealed yet. A set that has changed since it was sealed is sealed again only with
// `force`, and only if it is undamaged. Prints a line for each set. Returns the exit code.
int sealSets(const archive::FoundSets& found, bool force);

}  // namespace quillbox_set
