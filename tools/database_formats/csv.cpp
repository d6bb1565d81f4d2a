#include "csv.h"

#include "address_book.h"
#include "csv_row.h"
#include "database_formats/property_names.h"
#include "database_formats/record.h"
#include "database_formats/value_text.h"
#include "hex_digits.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace database_formats {

namespace {

// Precedes each row in the temporary file. `columns` is the number of columns when the row was written. Later records
// can add columns.
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

// The largest number of cells that an export writes. Each row has a cell for each property that occurs in any record.
// So without this limit, records with different properties could make the file very large.
constexpr std::size_t MostCells = 100'000'000;

[[noreturn]] void failTemporary()
{
    throw FormatFault("there is no room for a temporary file");
}

constexpr std::size_t MostColumns = 2 * 0xFFFF;  // the properties of a record, each with its flags
constexpr std::string_view FlagsSuffix = " flags";

// A column contains either the values or the flags of a property. A column that contains neither isn't imported.
struct Column {
    std::string name;
    std::optional<CEPROPID> property;
    std::optional<std::size_t> flags;  // the column of this property's flags
    bool isFlags = false;
};

std::vector<Column> columnsOf(const std::vector<CsvCell>& names)
{
    std::vector<Column> columns;
    std::unordered_map<CEPROPID, std::size_t> values;
    for (const CsvCell& cell : names) {
        Column& column = columns.emplace_back(Column{cell.text, propertyNamed(cell.text), std::nullopt, false});
        if (column.property && !values.emplace(*column.property, columns.size() - 1).second)
            throw FormatFault("two columns are named \"" + cell.text + "\"");
    }
    for (std::size_t at = 0; at < columns.size(); ++at) {
        const std::string_view name = columns[at].name;
        if (!name.ends_with(FlagsSuffix))
            continue;
        const auto property = propertyNamed(name.substr(0, name.size() - FlagsSuffix.size()));
        const auto value = property ? values.find(*property) : values.end();
        if (value == values.end() || columns[value->second].flags)
            throw FormatFault("the column \"" + shownName(name) + "\" has no column of its property");
        columns[value->second].flags = at;
        columns[at].isFlags = true;
    }
    if (values.empty())
        throw FormatFault(
            "no column is known; expected are LastName, FirstName, Company, HomeTelephone, Mail, Town, Categories, "
            "Birthday and Notes, the columns of Outlook, Google or Thunderbird, or a file with --columns");
    return columns;
}

bool hasValue(const CsvCell& cell)
{
    return cell.quoted || !cell.text.empty();
}

Record recordFrom(const std::vector<Column>& columns, const std::vector<CsvCell>& cells, LeftOut& leftOut)
{
    Record record;
    for (std::size_t at = 0; at < cells.size(); ++at) {
        const Column& column = columns[at];
        if (column.isFlags || !hasValue(cells[at]))
            continue;
        if (!column.property) {
            leftOut.add(column.name);
            continue;
        }
        try {
            const std::string_view flagsText = column.flags ? cells[*column.flags].text : std::string_view();
            const WORD flags = flagsText.empty() ? WORD{0} : flagsFrom(flagsText);
            addFromText(record, *column.property, flags, cells[at].text);
        } catch (const FormatFault& fault) {
            throw FormatFault("column \"" + column.name + "\": " + fault.what());
        }
    }
    return record;
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
    if ((rowCount_ + 1) * columns_.size() > MostCells)
        throw FormatFault(
            "its records have so many different properties that the table would have more than 100 million "
            "cells; export it as JSON lines");
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

void readCsv(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut, const ColumnMap& columnMap)
{
    CsvRows rows(lines);
    std::vector<CsvCell> cells;
    if (!rows.next(cells, MostColumns))
        throw FormatFault("the file has no row of column names");
    if (const auto addresses = addressColumns(textsOf(cells), columnMap))
        return readAddressBook(lines, *addresses, target, leftOut);
    const std::vector<Column> columns = columnsOf(cells);
    const std::size_t database = target.begin({});
    while (rows.next(cells, columns.size())) {
        try {
            if (cells.size() < columns.size())
                throw FormatFault("the row has fewer cells than the first one");
            const Record record = recordFrom(columns, cells, leftOut);
            if (!record.properties().empty())
                target.add(database, record.properties());
        } catch (FormatFault& fault) {
            fault.line = rows.line();
            throw;
        }
    }
}

}  // namespace database_formats
