// standard_streams.h - makes the standard streams safe to use, even if some are closed when the process starts.
#pragma once

#include <iosfwd>

namespace platform::kernel {

// Prepares the standard streams. Call this function first in main(). If one of the three descriptors is closed, the
// function opens it on something that can't be read or written. Otherwise a file that is opened later would get the
// number of the closed descriptor, and the messages for the user would be written to that file. After this call, a
// write to a pipe that nobody reads, or beyond a limit of file size, returns an error and doesn't end the process.
// On a terminal, std::cout and std::cerr show a question mark for each character that the terminal's locale can't show.
void secureStandardStreams();

// Standard input. Unlike std::cin, it reports a failed read as bad() and not as the end of the input.
std::istream& standardInput();

// Flushes standard output. Returns false if anything that the process printed couldn't be written.
[[nodiscard]] bool standardOutputIsWritten();

}  // namespace platform::kernel
