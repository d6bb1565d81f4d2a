// transcript.h - collects a line about each event on the screen, in order. docs/script.md describes the lines.
//
// Any thread may add lines, even while it holds the window core's mutex. Only the script's thread writes the lines to
// the file, so that no thread waits for the file while it holds that mutex.
#pragma once

#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>

namespace platform::headless {

class Transcript {
public:
    // If `out` is null, add() does nothing.
    explicit Transcript(std::ostream* out) : out_(out) {}

    bool isEnabled() const { return out_ != nullptr; }
    void add(std::string_view line);
    void writeOut();

private:
    std::ostream* out_;
    std::mutex mutex_;
    std::string pending_;
};

// Returns the text on one line, in double quotes, as UTF-8. Quotes in the text are doubled.
std::string quoted(std::u16string_view text);

}  // namespace platform::headless
