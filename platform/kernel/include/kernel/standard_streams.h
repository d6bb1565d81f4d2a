// standard_streams.h - standard input, output and error, some of which can be closed when the process starts.
#pragma once

#include <iosfwd>

namespace platform::kernel {

// Call it first in main(). If one of the three descriptors is closed, it is opened on something that can't be read or
// written. Otherwise a file that is opened later would get its number, and the messages for the user would be written
// to that file. A write to a pipe that nobody reads, or beyond a limit of file size, becomes an error and no longer
// ends the process. On a terminal, std::cout and std::cerr show a question mark for what its locale can't show.
void secureStandardStreams();

// Standard input. Unlike std::cin, it reports a failed read as bad() and not as the end of the input.
std::istream& standardInput();

// Flushes standard output. False if anything that was printed didn't get there.
[[nodiscard]] bool standardOutputIsWritten();

}  // namespace platform::kernel
