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

// Reads UTF-8, UTF-16 (also without a byte order mark) and Windows-1252. The bytes of the first call of add() decide
// whether the file is a text. Bytes that begin with a UTF-16 byte order mark are always a text. Other bytes that
// contain NULs must be UTF-16. Bytes without NULs must not contain control characters other than a tab, LF, CR, form
// feed, SUB and ESC.
//
// The object keeps the current line in memory, as UTF-16. When 1 MiB of a line is in memory, the object passes this
// part to the sink and goes on with the rest of the line.
class TextLines {
public:
    // Receives a line, or a part of a long line, without the line end. The number of the first line is 1.
    using Sink = std::function<void(std::u16string_view line, std::uint64_t number)>;

    explicit TextLines(Sink sink) : sink_(std::move(sink)) {}

    // Adds the next bytes of the file. Returns false if the file isn't a text. Don't call add() after that.
    [[nodiscard]] bool add(std::span<const std::byte> piece);
    // Passes the last line to the sink if it has no line end. Call finish() at the end of the file.
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
