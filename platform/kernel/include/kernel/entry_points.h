// entry_points.h - the platform's calls that a program can look up by name (ce/module.h). The code that implements such
// a call registers the call.
#pragma once

#include "ce/module.h"

#include <string>

namespace platform::kernel {

// Registers `entryPoint` under exactly this name. Replaces an earlier one with this name. Any thread may call this
// function.
void registerEntryPoint(std::u16string name, FARPROC entryPoint);

}  // namespace platform::kernel
