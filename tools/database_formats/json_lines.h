// json_lines.h - writes databases as JSON lines, and reads them.
//
// A line {"database": NAME, "type": N, "sort": [{"property": N, "flags": N}...]} begins a database. Each following line
// {"record": [PROPERTY...]} is one record, in the order of the database. property_json.h describes PROPERTY.
#pragma once

#include "database_formats/database.h"
#include "line_reader.h"

namespace database_formats {

class JsonLinesWriter : public DatabaseWriter {
public:
    explicit JsonLinesWriter(std::ostream& out) : out_(out) {}

    void begin(const DatabaseHead& head) override;
    void add(std::span<const CEPROPVAL> properties) override;
    void finish() override {}

private:
    std::ostream& out_;
};

void readJsonLines(LineReader& lines, DatabaseTarget& target);

}  // namespace database_formats
