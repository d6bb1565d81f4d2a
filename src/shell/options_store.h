// options_store.h - keeps gOptions in the registry between two starts of the program.
#pragma once

#include "engine/options.h"

// Fills gOptions with the values that apply before anything was saved.
void SetDefaultOptions();

// Read gOptions from the registry and write it there. 1, or 0 if the key can't be opened, and then nothing changes.
DWORD LoadOptions();
DWORD SaveOptions();
