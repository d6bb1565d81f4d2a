// set_verification.h - reads a set back after its backup and compares it with the data that the backup has read.
#pragma once

#include "ce/types.h"

// Reads each stream of the set to its end and compares its content with the digests that the backup has noted
// (gStoredDigests). Reports an item that differs or is damaged as not stored. If the run is to stop, reports the list
// file as not reached.
void VerifyStoredSet(const WCHAR* listPath);
