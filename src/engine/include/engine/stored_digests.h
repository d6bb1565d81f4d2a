// stored_digests.h - declares the digests of the data that a backup has read from the device. The verification compares
// the content of the set with these digests.
#pragma once

#include "ce/types.h"

#include <vector>

// One digest for each entry of the new set, in the order of the entries. The digest is that of the item's unpacked
// bytes (DigestWith in set/compressed_stream.h). A backup fills the vector if gDigestsBlocks is true.
inline std::vector<std::uint64_t> gStoredDigests;
