// entry_points.h - the platform's calls that a program can look up by name. The room that implements a call registers
// it.
#pragma once

#include "ce/module.h"

#include <string>

namespace platform::kernel {

// Registers `entryPoint` under exactly this name. Replaces an earlier entry point of the name. Any thread may call it.
void registerEntryPoint(std::u16string name, FARPROC entryPoint);

}  // namespace platform::kernel
