// set_verification.h - reads a set back after its backup.
#pragma once

#include "ce/types.h"

// Reads every stream of the set whole and compares its content with the digests that the backup has noted
// (gStoredDigests). Reports an item that differs or is damaged as not stored, and the list as not reached if the run is
// to stop.
void VerifyStoredSet(const WCHAR* listPath);
