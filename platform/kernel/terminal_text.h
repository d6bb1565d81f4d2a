// terminal_text.h - what a terminal of any locale can show of UTF-8.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace platform::kernel {

// Writes text to a terminal through the buffer of a stream, until it is destroyed. What could change the terminal's
// state becomes a question mark: bytes that aren't UTF-8, the controls U+0080 to U+009F, and every character that isn't
// ASCII if the terminal doesn't expect UTF-8.
class TerminalText : public std::streambuf {
public:
    TerminalText(std::ostream& stream, bool expectsUtf8);
    TerminalText(const TerminalText&) = delete;
    TerminalText& operator=(const TerminalText&) = delete;
    ~TerminalText() override;

protected:
    int_type overflow(int_type byte) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    bool put(char byte);
    bool end();

    std::ostream& stream_;
    std::streambuf* terminal_;
    bool expectsUtf8_;
    std::string character_;  // its bytes so far
};

// Whether the environment names a locale with UTF-8.
[[nodiscard]] bool localeHasUtf8();

}  // namespace platform::kernel
