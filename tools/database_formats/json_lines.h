// json_lines.h - databases as JSON lines.
//
// A line {"database": NAME, "type": N, "sort": [{"property": N, "flags": N}...]} begins a database; each line
// {"record": [PROPERTY...]} behind it is one record, in the database's own order. property_json.h tells a PROPERTY.
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
