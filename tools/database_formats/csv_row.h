// csv_row.h - CSV row by row: cells, quotes, line ends within quotes.
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

    // The next row that isn't empty; false at the end. A fault's line is the one where the row begins. The first row
    // settles what separates cells: a comma, a semicolon or a tab. Throws a FormatFault, also for more than
    // `mostCells`.
    [[nodiscard]] bool next(std::vector<CsvCell>& row, std::size_t mostCells);

    // Where the last row began.
    [[nodiscard]] std::size_t line() const { return line_; }

private:
    void settleSeparator(std::size_t at);
    bool readLine();
    std::size_t takeQuoted(std::size_t at, CsvCell& cell);
    std::size_t takePlain(std::size_t at, CsvCell& cell) const;
    [[noreturn]] void refuse(const char* what) const;

    LineReader& lines_;
    std::string text_;             // the line being read
    bool carriageReturn_ = false;  // stood at its end
    std::size_t rowBytes_ = 0;
    std::size_t line_ = 0;
    char separator_ = 0;
};

}  // namespace database_formats
