// line_reader.h - reads a file line by line. Limits on lines and records bound the memory that a damaged or hostile
// file can take.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

// The largest number of bytes of a file that a reader takes for one record. No device has that much memory.
inline constexpr std::size_t LongestRecord = std::size_t{64} * 1024 * 1024;

class LineReader {
public:
    explicit LineReader(std::istream& in) : in_(in), start_(in.tellg()) {}

    // Reads the next line, without its LF but with a CR before it. False at the end. Throws a FormatFault for a line of
    // more than `longest` bytes, for a file in UTF-16, and if the file can't be read.
    [[nodiscard]] bool next(std::string& line, std::size_t longest);

    // Goes back to where the stream was at first. Only for a stream that has a position.
    void restart();

    // The number of the last line that was read, from 1.
    std::size_t number() const { return number_; }

private:
    bool fill();

    std::istream& in_;
    std::istream::pos_type start_;
    std::vector<char> buffer_;
    std::string_view rest_;
    std::size_t number_ = 0;
};

}  // namespace database_formats
