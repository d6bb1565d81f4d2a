// line_reader.h - a file line by line, with a limit, so that no file can take more memory than a record may.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

class LineReader {
public:
    explicit LineReader(std::istream& in) : in_(in) {}

    // Gives the next line without its LF; a CR before it stays. False at the end. Throws a FormatFault for a line of
    // more than `longest` bytes, for a file in UTF-16, and if the file can't be read.
    [[nodiscard]] bool next(std::string& line, std::size_t longest);

    // Of the line that was read last, from 1.
    [[nodiscard]] std::size_t number() const { return number_; }

private:
    bool fill();

    std::istream& in_;
    std::vector<char> buffer_;
    std::string_view rest_;
    std::size_t number_ = 0;
};

}  // namespace database_formats
