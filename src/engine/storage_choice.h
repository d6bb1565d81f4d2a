// storage_choice.h - where a new set goes: a card of the device or the device itself.
#pragma once

#include "ce/types.h"

// Lets the user choose. 1 with the root in `storageRoot` (260 characters): a folder's path without a trailing
// backslash, empty for the main device. 0 when no choice was taken.
BOOL ChooseStorage(WCHAR* storageRoot);
