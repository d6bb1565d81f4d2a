// command_run.h - runs a command of quillbox without a window, and reports how it went. Every command but `profile`
// opens the device.
#pragma once

#include "command_line.h"

#include "ce/types.h"

namespace platform::device {

// Returns the exit code. `options` must have a command. `instance` is the program's instance handle.
int runCommand(const CommandLine& options, HINSTANCE instance);

}  // namespace platform::device
