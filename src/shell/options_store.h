// options_store.h - saves gOptions in the registry for the next start of the program.
#pragma once

#include "engine/options.h"

// Fills gOptions with the values that apply before anything was saved.
void SetDefaultOptions();

// LoadOptions reads gOptions from the registry, and SaveOptions writes it to the registry. Both return 1, or 0 if the
// key can't be opened. In that case nothing changes.
DWORD LoadOptions();
DWORD SaveOptions();
