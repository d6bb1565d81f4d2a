// database_form.cpp - see database_form.h.

#include "database_forms/database_form.h"

#include "csv_reader.h"
#include "csv_writer.h"
#include "icalendar.h"
#include "json_lines.h"
#include "line_reader.h"
#include "vcard.h"

#include <algorithm>

namespace database_forms {

namespace {

struct FormName {
    Form form;
    std::string_view name;
    std::string_view extension;
};

constexpr FormName formNames[] = {
    {Form::JsonLines, "jsonl", ".jsonl"},
    {Form::VCard, "vcard", ".vcf"},
    {Form::ICalendar, "ical", ".ics"},
    {Form::Csv, "csv", ".csv"},
};

}  // namespace

std::optional<Form> formNamed(std::string_view name)
{
    const auto* const found = std::ranges::find(formNames, name, &FormName::name);
    return found != std::end(formNames) ? std::optional(found->form) : std::nullopt;
}

Form formOfFile(std::string_view file)
{
    const auto* const found =
        std::ranges::find_if(formNames, [&](const FormName& form) { return file.ends_with(form.extension); });
    return found != std::end(formNames) ? found->form : Form::JsonLines;
}

std::unique_ptr<DatabaseWriter> makeWriter(Form form, std::ostream& out)
{
    switch (form) {
    case Form::VCard:
        return std::make_unique<VCardWriter>(out);
    case Form::ICalendar:
        return std::make_unique<ICalendarWriter>(out);
    case Form::Csv:
        return std::make_unique<CsvWriter>(out);
    case Form::JsonLines:
        break;
    }
    return std::make_unique<JsonLinesWriter>(out);
}

void read(Form form, std::istream& in, DatabaseTarget& target, LeftOut& leftOut)
{
    LineReader lines(in);
    try {
        switch (form) {
        case Form::JsonLines:
            return readJsonLines(lines, target);
        case Form::VCard:
            return readVCards(lines, target, leftOut);
        case Form::ICalendar:
            return readICalendar(lines, target, leftOut);
        case Form::Csv:
            return readCsv(lines, target, leftOut);
        }
    } catch (FormFault& fault) {
        if (fault.line == 0)
            fault.line = lines.number();
        throw;
    }
}

}  // namespace database_forms
