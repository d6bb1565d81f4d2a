// csv_writer.cpp - see csv_writer.h.

#include "csv_writer.h"

#include "database_formats/value_text.h"
#include "hex_digits.h"
#include "property_names.h"

#include <algorithm>

namespace database_formats {

namespace {

// What stands before each row in the temporary file. A row lacks the columns that only later ones brought up.
struct RowHead {
    std::size_t bytes;
    std::size_t columns;
};

std::string cell(const std::string& text)
{
    if (!text.empty() && text.find_first_of(",;\t\"\r\n") == std::string::npos && text.front() != ' ' &&
        text.back() != ' ')
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string(2, c) : std::string(1, c);
    return quoted + '"';
}

[[noreturn]] void failTemporary()
{
    throw FormatFault("there is no room for a temporary file");
}

}  // namespace

void CsvWriter::begin(const DatabaseHead& head)
{
    if (rows_)
        throw FormatFault("CSV holds one database, not several");
    rows_.reset(std::tmpfile());
    if (!rows_)
        failTemporary();
    const auto usual = usualProperties(head.type);
    named_ = !usual.empty();
    for (const CEPROPID id : usual)
        (void)columnOf(id, false);
}

void CsvWriter::add(std::span<const CEPROPVAL> properties)
{
    std::map<std::size_t, std::string> cells;
    for (const CEPROPVAL& property : properties) {
        const std::size_t column = columnOf(property.propid, false);
        if (!cells.emplace(column, cell(valueText(property, Controls::Kept))).second)
            throw FormatFault("a record has the property " + hexadecimal(property.propid, 8) + " twice");
        if (property.wFlags != 0)
            cells.emplace(columnOf(property.propid, true), std::to_string(property.wFlags));
    }
    std::string row;
    std::size_t column = 0;
    for (const auto& [wanted, text] : cells) {
        row.append(wanted - column, ',');
        row += text;
        column = wanted;
    }
    row.append(columns_.empty() ? 0 : columns_.size() - 1 - column, ',');
    keep(row);
}

void CsvWriter::finish()
{
    if (!rows_)
        throw FormatFault("there is no database to write");
    out_ << heading_ << "\r\n";
    writeRows();
}

std::size_t CsvWriter::columnOf(CEPROPID id, bool flags)
{
    const auto [column, isNew] = columns_.emplace(std::pair(id, flags), columns_.size());
    if (isNew)
        heading_ +=
            (column->second == 0 ? "" : ",") + (named_ ? nameOf(id) : hexadecimal(id, 8)) + (flags ? " flags" : "");
    return column->second;
}

void CsvWriter::keep(const std::string& row)
{
    const RowHead head{row.size(), columns_.size()};
    if (std::fwrite(&head, sizeof head, 1, rows_.get()) != 1 ||
        std::fwrite(row.data(), 1, row.size(), rows_.get()) != row.size())
        failTemporary();
    ++rowCount_;
}

void CsvWriter::writeRows()
{
    if (std::fflush(rows_.get()) != 0)
        failTemporary();
    std::rewind(rows_.get());
    std::string row;
    for (std::size_t written = 0; written < rowCount_; ++written) {
        RowHead head{};
        if (std::fread(&head, sizeof head, 1, rows_.get()) != 1)
            failTemporary();
        row.resize(head.bytes);
        if (std::fread(row.data(), 1, row.size(), rows_.get()) != row.size())
            failTemporary();
        row.append(columns_.size() - std::max<std::size_t>(head.columns, 1), ',');
        out_ << row << "\r\n";
    }
}

}  // namespace database_formats
