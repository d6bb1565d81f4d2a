// stored_digests.h - declares the digests of the data that a backup has read from the device. The verification compares
// the content of the set with these digests.
#pragma once

#include "ce/types.h"

#include <vector>

// The digests of the contents of the set's entries, in the order of the entries (set/compressed_stream.h). A run fills
// the vector if gDigestsBlocks is true.
inline std::vector<std::uint64_t> gStoredDigests;
