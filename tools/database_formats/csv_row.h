// csv_row.h - reads CSV row by row: cells, quotes, and line ends within quotes.
#pragma once

#include "line_reader.h"

#include <string>
#include <vector>

namespace database_formats {

struct CsvCell {
    std::string text;
    bool quoted = false;
};

class CsvRows {
public:
    explicit CsvRows(LineReader& lines) : lines_(lines) {}

    // Reads the next row that isn't empty. Returns false at the end. The first row determines the separator of all
    // cells: a comma, a semicolon or a tab. Throws a FormatFault for a damaged row and for a row of more than
    // `mostCells` cells, with the number of the line where the row begins. Throws a FormatFault without a line number
    // for a NUL, for a row of more than LongestRecord bytes, and if the file can't be read.
    [[nodiscard]] bool next(std::vector<CsvCell>& row, std::size_t mostCells);

    // The number of the line where the last row began.
    std::size_t line() const { return line_; }

private:
    void determineSeparator(std::size_t offset);
    bool readLine();
    std::size_t takeQuoted(std::size_t offset, CsvCell& cell);
    std::size_t takePlain(std::size_t offset, CsvCell& cell) const;
    [[noreturn]] void refuse(const char* what) const;

    LineReader& lines_;
    std::string text_;             // the current line
    bool carriageReturn_ = false;  // the line ended with CR LF
    std::size_t rowBytes_ = 0;     // number of bytes of the row so far
    std::size_t line_ = 0;
    char separator_ = 0;  // 0: not yet determined
};

}  // namespace database_formats
