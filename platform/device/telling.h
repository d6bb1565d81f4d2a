// telling.h - prints sentences for the user to standard error.
#pragma once

#include "device/device.h"

#include <string>

namespace platform::device {

// Prints the sentence. Returns `exitCode`, so that a caller can end with `return tell(...)`. Control characters are
// replaced, because a file's name in the sentence could send commands to the terminal.
int tell(const std::string& sentence, int exitCode);

// The text with a question mark in place of each control character.
std::string onScreen(std::string text);

void tellWarnings(const OpenResult& opened);

// Prints the sentences about all failures since the process started (whatWasLeftOut) to standard error. The program's
// own windows may not have shown these failures. Returns ExitLeftOut if `exitCode` is ExitComplete and there was a
// failure. Otherwise returns `exitCode`.
int tellLeftOut(int exitCode);

}  // namespace platform::device
