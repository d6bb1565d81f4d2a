// command_run.h - runs a command of quillbox: opens the device, performs one run of the program without a window, and
// reports how it went.
#pragma once

#include "command_line.h"

#include "ce/types.h"

namespace platform::device {

// Returns the exit code. `options` has a command; `instance` is that of the program.
int runCommand(const CommandLine& options, HINSTANCE instance);

}  // namespace platform::device
