// format_fault.h - what is wrong with a file that is read, or with a database for the format that is asked.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace database_formats {

// Its text is a sentence's end, without capital and full stop: "a text has a NUL in it".
class FormatFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    std::size_t line = 0;  // of the file, from 1; 0: not known, or no matter of a line
};

}  // namespace database_formats
