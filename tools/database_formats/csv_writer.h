// csv_writer.h - a database as CSV (RFC 4180): a row a record, a column a property.
//
// A column is headed by the property's name or its eight hexadecimal digits; a second one, "NAME flags", stands beside
// it if some record has flags there. A cell without anything is a property that the record lacks, one of two quotes a
// property that is empty. Contacts, appointments and tasks have their usual columns, used or not. Which others there
// are is known only at the end, so the rows wait in a temporary file.
#pragma once

#include "database_formats/database.h"

#include <cstdio>
#include <map>
#include <memory>
#include <ostream>
#include <utility>

namespace database_formats {

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

}  // namespace database_formats
