// csv.h - writes a database as CSV (RFC 4180), and reads CSV. A row is a record, and a column is a property.
//
// The heading of a column is the property's name, or its id in eight hexadecimal digits. If a record has flags for a
// property, there is a second column "NAME flags". An empty cell is a property that the record doesn't have. A cell of
// two quotes is a property with an empty value. Contacts, appointments and tasks always have their usual columns.
#pragma once

#include "database_formats/column_map.h"
#include "database_formats/database.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <ostream>
#include <utility>

namespace database_formats {

// The columns are known only after the last record, so the rows are kept in a temporary file until then.
class CsvWriter : public DatabaseWriter {
public:
    explicit CsvWriter(std::ostream& out) : out_(out) {}

    void begin(const DatabaseHead& head) override;
    void add(std::span<const CEPROPVAL> properties) override;
    void finish() override;

private:
    std::size_t columnOf(CEPROPID id, bool flags);
    void keep(const std::string& row);
    void writeRows();

    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::ostream& out_;
    bool named_ = false;
    std::string heading_;
    std::map<std::pair<CEPROPID, bool>, std::size_t> columns_;
    std::unique_ptr<std::FILE, FileCloser> rows_;
    std::size_t rowCount_ = 0;
};

// Reads the file into one database. For an address book of another program, the database gets the name, type and sort
// orders that contacts usually have on a device. For any other file, the DatabaseHead is empty. Columns with an
// unknown heading are left out. If `columns` isn't empty, any file is read as an address book.
void readCsv(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut, const ColumnMap& columns);

}  // namespace database_formats
