// stored_digests.h - what a backup has read from the device, to compare the set with it.
#pragma once

#include "ce/types.h"

#include <vector>

// The digests of the content of the set's entries, in their order (set/compressed_stream.h). Filled by a run while
// gDigestsBlocks is on.
inline std::vector<std::uint64_t> gStoredDigests;
