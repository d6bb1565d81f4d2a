// text_lines.h - recognises a text file by its first bytes, and splits it into lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quillbox_set {

// UTF-8, UTF-16 (also without a byte order mark) and Windows-1252. A file with other control characters than those of
// texts isn't a text. The memory depends on the longest line, but a line of more than 1 MiB is passed on in parts.
class TextLines {
public:
    // Receives a line without its end, and its number from 1.
    using Sink = std::function<void(std::u16string_view line, std::uint64_t number)>;

    explicit TextLines(Sink sink) : sink_(std::move(sink)) {}

    // The next bytes of the file. False if it isn't a text; nothing more can be added then.
    [[nodiscard]] bool add(std::span<const std::byte> piece);
    // The end of the file.
    void finish();

private:
    struct Close {
        void operator()(void* converter) const;
    };

    bool begin(std::string_view piece);
    void decode(std::string_view piece);
    void split(std::u16string_view text);
    void passOn();

    Sink sink_;
    std::unique_ptr<void, Close> converter_;  // none before the first bytes
    std::string cut_;                         // the first bytes of a character that isn't complete yet
    std::u16string line_;
    std::uint64_t number_ = 1;
    bool afterReturn_ = false;  // the last character was a CR; an LF after it ends no further line
};

}  // namespace quillbox_set
