// csv_reader.cpp - see csv_reader.h.

#include "csv_reader.h"

#include "csv_row.h"
#include "database_formats/record.h"
#include "database_formats/value_text.h"
#include "property_names.h"

#include <optional>
#include <string_view>
#include <unordered_map>

namespace database_formats {

namespace {

constexpr std::size_t MostColumns = 2 * 0xFFFF;  // a record's properties, each with its flags
constexpr std::string_view FlagsSuffix = " flags";

// What a column holds; neither: it is left out.
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
            throw FormatFault("the column \"" + shownName(name) + "\" stands beside no property");
        columns[value->second].flags = at;
        columns[at].isFlags = true;
    }
    if (values.empty())
        throw FormatFault("no column is named after a property");
    return columns;
}

bool isThere(const CsvCell& cell)
{
    return cell.quoted || !cell.text.empty();
}

Record recordFrom(const std::vector<Column>& columns, const std::vector<CsvCell>& cells, LeftOut& leftOut)
{
    Record record;
    for (std::size_t at = 0; at < cells.size(); ++at) {
        const Column& column = columns[at];
        if (column.isFlags || !isThere(cells[at]))
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

void readCsv(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut)
{
    CsvRows rows(lines);
    std::vector<CsvCell> cells;
    if (!rows.next(cells, MostColumns))
        throw FormatFault("there is no row of names");
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
