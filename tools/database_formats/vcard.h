// vcard.h - writes databases of contacts as a vCard file, and reads such a file.
#pragma once

#include "database_formats/database.h"
#include "database_formats/identifier.h"
#include "database_formats/left_out.h"
#include "line_reader.h"

namespace database_formats {

class VCardWriter : public DatabaseWriter {
public:
    VCardWriter(std::ostream& out, LeftOut& leftOut) : out_(out), leftOut_(leftOut) {}

    void begin(const DatabaseHead& head) override;
    void add(std::span<const CEPROPVAL> properties) override;
    void finish() override {}

private:
    std::ostream& out_;
    LeftOut& leftOut_;
    Identifiers identifiers_;
};

void readVCards(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut);

}  // namespace database_formats
