// set_verification.h - reads a set back after its backup and compares it with the data that the backup has read.
#pragma once

#include "ce/types.h"

// Reads each stream of the set to its end and compares the digest of its unpacked bytes with the one in gStoredDigests.
// If an item is damaged or its digest differs, reports this item as not stored. If the list file or the data file can't
// be opened, reports this file as not stored. Also reports the list file as not stored if it can't be read to its end,
// or if the number of its entries differs from the number of digests in gStoredDigests. If the run is to stop, reports
// the list file as not reached.
void VerifyStoredSet(const WCHAR* listPath);
