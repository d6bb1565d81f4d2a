#include "database_formats/database_format.h"

#include "csv.h"
#include "icalendar.h"
#include "json_lines.h"
#include "line_reader.h"
#include "vcard.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace database_formats {

namespace {

struct FormatName {
    Format format;
    std::string_view name;
    std::string_view extension;
};

constexpr FormatName formatNames[] = {
    {Format::JsonLines, "jsonl", ".jsonl"},
    {Format::VCard, "vcard", ".vcf"},
    {Format::ICalendar, "ical", ".ics"},
    {Format::Csv, "csv", ".csv"},
};

constexpr std::size_t MostFromPipe = std::size_t{256} * 1024 * 1024;

void keep(std::istream& in, std::ostream& kept)
{
    std::array<char, 65536> piece{};
    for (std::size_t bytes = 0; in.read(piece.data(), piece.size()), in.gcount() > 0;) {
        bytes += static_cast<std::size_t>(in.gcount());
        if (bytes > MostFromPipe)
            throw FormatFault("a file of more than 256 MiB must have a name: standard input is kept in memory");
        kept.write(piece.data(), in.gcount());
    }
}

}  // namespace

std::optional<Format> formatNamed(std::string_view name)
{
    const auto* const found = std::ranges::find(formatNames, name, &FormatName::name);
    return found != std::end(formatNames) ? std::optional(found->format) : std::nullopt;
}

Format formatOfFile(std::string_view file)
{
    const auto* const found =
        std::ranges::find_if(formatNames, [&](const FormatName& format) { return file.ends_with(format.extension); });
    return found != std::end(formatNames) ? found->format : Format::JsonLines;
}

std::string_view extensionOf(Format format)
{
    return std::ranges::find(formatNames, format, &FormatName::format)->extension;
}

bool holds(Format format, DWORD type)
{
    switch (format) {
    case Format::VCard:
        return type == personal::ContactsType;
    case Format::ICalendar:
        return type == personal::AppointmentsType || type == personal::TasksType;
    default:
        return true;
    }
}

std::unique_ptr<DatabaseWriter> makeWriter(Format format, std::ostream& out, LeftOut& leftOut)
{
    switch (format) {
    case Format::VCard:
        return std::make_unique<VCardWriter>(out, leftOut);
    case Format::ICalendar:
        return std::make_unique<ICalendarWriter>(out, leftOut);
    case Format::Csv:
        return std::make_unique<CsvWriter>(out);
    case Format::JsonLines:
        break;
    }
    return std::make_unique<JsonLinesWriter>(out);
}

// The readers of iCalendar and CSV read their file twice. A pipe can be read only once, so its content is kept in
// memory.
void read(Format format, std::istream& in, DatabaseTarget& target, LeftOut& leftOut, const ColumnMap& columns)
{
    std::stringstream kept;
    const bool twice = format == Format::ICalendar || format == Format::Csv;
    if (twice && in.tellg() == std::istream::pos_type(-1)) {
        in.clear();
        keep(in, kept);
        return read(format, kept, target, leftOut, columns);
    }
    LineReader lines(in);
    try {
        switch (format) {
        case Format::JsonLines:
            return readJsonLines(lines, target);
        case Format::VCard:
            return readVCards(lines, target, leftOut);
        case Format::ICalendar:
            return readICalendar(lines, target, leftOut);
        case Format::Csv:
            return readCsv(lines, target, leftOut, columns);
        }
    } catch (FormatFault& fault) {
        if (fault.line == 0)
            fault.line = lines.number();
        throw;
    }
}

}  // namespace database_formats
