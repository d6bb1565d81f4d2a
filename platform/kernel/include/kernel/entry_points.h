// entry_points.h - the platform's calls that a program can look up by name, filled by the rooms that have
// them.
#pragma once

#include "ce/module.h"

#include <string>

namespace platform::kernel {

// Makes `entryPoint` known under that exact name; an earlier one of the name is replaced. Any thread.
void registerEntryPoint(std::u16string name, FARPROC entryPoint);

}  // namespace platform::kernel
