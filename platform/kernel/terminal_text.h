// terminal_text.h - writes UTF-8 to a terminal of any locale.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace platform::kernel {

// Until the object is destroyed, all text of the stream goes through the object to the terminal. ASCII is unchanged.
// Bytes that aren't UTF-8 and the controls U+0080 to U+009F could change the terminal's state, so they become question
// marks. If the terminal doesn't expect UTF-8, every character that isn't ASCII becomes a question mark.
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
    std::string character_;  // the bytes of an incomplete character
};

// Whether the environment names a locale with UTF-8.
[[nodiscard]] bool localeHasUtf8();

}  // namespace platform::kernel
