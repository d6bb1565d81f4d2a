// set_verification.h - reads a set back after its backup and compares it with the data that the backup has read.
#pragma once

#include "ce/types.h"

// Reads each stream of the set to its end and compares the digest of its unpacked bytes with the one in gStoredDigests.
// Reports an item that differs or is damaged as not stored. Reports a file of the set as not stored if it can't be
// opened, and the list file also if it can't be read or if its number of entries differs from that of gStoredDigests.
// If the run is to stop, reports the list file as not reached.
void VerifyStoredSet(const WCHAR* listPath);
