// standard_streams.h - standard input, output and error, some of which can be closed when the process starts.
#pragma once

#include <iosfwd>

namespace platform::kernel {

// Call it first in main(). A closed one of the three descriptors is opened to something that can't be read or written,
// so that no file opened later gets its number and, with that, the messages for the user. A write to a pipe that nobody
// reads, or beyond a limit of file size, becomes an error and no longer ends the process.
void secureStandardStreams();

// Standard input. Unlike std::cin, it becomes bad when a read fails, and doesn't take that for the end.
std::istream& standardInput();

// Flushes standard output. False if anything that was printed didn't get there.
[[nodiscard]] bool standardOutputIsWritten();

}  // namespace platform::kernel
