// transcript.h - what happened on the screen, a line each, in order. docs/script.md has the lines' form.
//
// Any thread adds; the script's thread writes them out, since a line may be added under the window core's
// lock, where nobody should wait for a file.
#pragma once

#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>

namespace platform::headless {

class Transcript {
public:
    // Null: nothing is kept.
    explicit Transcript(std::ostream* out) : out_(out) {}

    [[nodiscard]] bool isWanted() const { return out_ != nullptr; }
    void add(std::string_view line);
    void writeOut();

private:
    std::ostream* out_;
    std::mutex mutex_;
    std::string waiting_;
};

// In double quotes, on one line, as UTF-8; a quote inside is doubled.
[[nodiscard]] std::string quoted(std::u16string_view text);

}  // namespace platform::headless
