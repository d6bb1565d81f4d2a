// format_fault.h - what is wrong with a file, or why a format can't hold a database.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace database_formats {

// The text of the exception is a clause that callers complete to a sentence: "a text has a NUL in it".
class FormatFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    std::size_t line = 0;  // line number in the file, from 1. 0 if it is unknown or the fault isn't in a line.
};

}  // namespace database_formats
