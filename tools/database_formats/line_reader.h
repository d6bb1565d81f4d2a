// line_reader.h - reads a file line by line. The sizes of lines and records are limited, so that a damaged or hostile
// file can't take much memory.
#pragma once

#include <bit>
#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

// The largest number of bytes that one record may have in a file. No device has that much memory.
inline constexpr std::size_t LongestRecord = std::size_t{64} * 1024 * 1024;

// A file in UTF-8 may begin with this mark, which isn't part of its text.
inline constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

class LineReader {
public:
    explicit LineReader(std::istream& in) : in_(in), start_(in.tellg()) {}

    // Reads the next line, without its LF. If there is a CR before the LF, the line contains the CR. Returns false at
    // the end. Throws a FormatFault for a line of more than `longest` bytes, and if the file can't be read. A file in
    // UTF-16 with a byte order mark is converted to UTF-8.
    [[nodiscard]] bool next(std::string& line, std::size_t longest);

    // Goes back to the position that the stream had when the LineReader was made. The stream must be seekable.
    void restart();

    // The number of the last line that was read, from 1. It is 0 before the first line.
    std::size_t number() const { return number_; }

private:
    bool fill();
    void determineEncoding();
    void convert(bool ended);

    std::istream& in_;
    std::istream::pos_type start_;
    std::vector<char> buffer_;
    std::string_view rest_;             // the unread part of buffer_ or converted_
    std::optional<std::endian> units_;  // byte order of a file in UTF-16. Nothing for any other file.
    std::u16string text_;
    std::string converted_;
    bool begun_ = false;
    std::size_t number_ = 0;
};

}  // namespace database_formats
