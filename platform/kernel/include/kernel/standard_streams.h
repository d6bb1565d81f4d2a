// standard_streams.h - descriptors 0, 1 and 2, whatever the process's starter has left of them.
#pragma once

#include <iosfwd>

namespace platform::kernel {

// For the very start of main(). Each of the three that is closed is taken, so that no file that is opened later gets
// its number and with it what was meant for the user; reading and writing it fail. A pipe that nobody reads and a file
// at its size limit become errors of the write, no longer the process's end.
void secureStandardStreams();

// Standard input. A read that fails makes it bad; std::cin takes that for the end.
[[nodiscard]] std::istream& standardInput();

// Whether all that was printed on standard output got there.
[[nodiscard]] bool standardOutputIsWritten();

}  // namespace platform::kernel
