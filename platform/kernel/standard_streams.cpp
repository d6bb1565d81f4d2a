#include "kernel/standard_streams.h"

#include "terminal_text.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <iostream>
#include <istream>
#include <optional>

namespace platform::kernel {

void secureStandardStreams()
{
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() returns the lowest free descriptor, which is `number`. With O_PATH a folder can always be opened, and
        // its descriptor can't be read or written.
        if (::fcntl(number, F_GETFD) < 0)
            (void)::open("/", O_PATH | O_DIRECTORY);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ})
        (void)std::signal(signal, SIG_IGN);
    static std::optional<TerminalText> output;
    static std::optional<TerminalText> errors;
    if (::isatty(STDOUT_FILENO) == 1)
        output.emplace(std::cout, localeHasUtf8());
    if (::isatty(STDERR_FILENO) == 1)
        errors.emplace(std::cerr, localeHasUtf8());
}

std::istream& standardInput()
{
    static __gnu_cxx::stdio_filebuf<char> buffer(STDIN_FILENO, std::ios::in | std::ios::binary);
    static std::istream stream(&buffer);
    return stream;
}

bool standardOutputIsWritten()
{
    return std::cout.flush().good() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

}  // namespace platform::kernel
