// entry_points.h - the platform's calls that a program can look up by name. Their rooms register them.
#pragma once

#include "ce/module.h"

#include <string>

namespace platform::kernel {

// Registers `entryPoint` under exactly that name and replaces an earlier one. Any thread.
void registerEntryPoint(std::u16string name, FARPROC entryPoint);

}  // namespace platform::kernel
