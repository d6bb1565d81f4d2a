// line_reader.h - reads a file line by line. Limits on lines and records bound the memory that a damaged or hostile
// file can take.
#pragma once

#include <bit>
#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

// The largest number of bytes of a file that a reader takes for one record. No device has that much memory.
inline constexpr std::size_t LongestRecord = std::size_t{64} * 1024 * 1024;

// May begin a text in UTF-8, and is no part of it.
inline constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

class LineReader {
public:
    explicit LineReader(std::istream& in) : in_(in), start_(in.tellg()) {}

    // Reads the next line, without its LF but with a CR before it. False at the end. Throws a FormatFault for a line of
    // more than `longest` bytes, and if the file can't be read. A file in UTF-16 with its mark is read as UTF-8.
    [[nodiscard]] bool next(std::string& line, std::size_t longest);

    // Goes back to where the stream was at first. Only for a stream that has a position.
    void restart();

    // The number of the last line that was read, from 1.
    std::size_t number() const { return number_; }

private:
    bool fill();
    void determineEncoding();
    void convert(bool ended);

    std::istream& in_;
    std::istream::pos_type start_;
    std::vector<char> buffer_;
    std::string_view rest_;             // of buffer_ or converted_
    std::optional<std::endian> units_;  // of UTF-16. Nothing: bytes.
    std::u16string text_;
    std::string converted_;
    bool begun_ = false;
    std::size_t number_ = 0;
};

}  // namespace database_formats
