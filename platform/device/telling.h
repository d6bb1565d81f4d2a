// telling.h - sentences for the user on standard error.
#pragma once

#include "device/device.h"

#include <string>

namespace platform::device {

// Returns the exit code, for callers that end with it. Control characters are replaced, because a file's name in the
// sentence could send commands to the terminal.
int tell(const std::string& sentence, int exitCode);

// The text without control characters.
std::string onScreen(std::string text);

void tellWarnings(const OpenResult& opened);

// Tells what was left out since the start. The program's own windows may not have reported it. Returns the exit code,
// or ExitLeftOut in place of ExitComplete if there is something.
int tellLeftOut(int exitCode);

}  // namespace platform::device
