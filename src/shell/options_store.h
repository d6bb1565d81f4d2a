// options_store.h - saves gOptions in the registry, and loads it at the next start of the program.
#pragma once

#include "engine/options.h"

// Fills gOptions with the values that apply before anything was saved.
void SetDefaultOptions();

// LoadOptions reads gOptions from the registry, and SaveOptions writes it to the registry. Both return 0 and change
// nothing if the key can't be opened. Otherwise they return 1, even if a value can't be read or written.
DWORD LoadOptions();
DWORD SaveOptions();
