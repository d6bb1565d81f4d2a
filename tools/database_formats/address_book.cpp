#include "address_book.h"

#include "content_line.h"
#include "database_formats/character_set.h"
#include "database_formats/format_fault.h"
#include "database_formats/record.h"
#include "database_formats/value_text.h"
#include "day_order.h"

#include "ce/personal_databases.h"

#include <algorithm>

namespace database_formats {

namespace {

constexpr std::string_view BetweenValues = ":::";
// Programs that require a year write 1604 for a birthday without a year.
constexpr std::string_view NoYear = "1604";

// Facts about the whole file that the reader needs before it can convert the first row.
struct Survey {
    bool utf8 = true;
    DayOrderSearch order;
};

// Calls `work` with each row after the headings. A FormatFault gets the line number of its row.
template <class Work>
void forEachRow(LineReader& lines, std::size_t columns, Work work)
{
    lines.restart();
    CsvRows rows(lines);
    std::vector<CsvCell> cells;
    (void)rows.next(cells, columns);
    while (rows.next(cells, columns)) {
        try {
            if (cells.size() < columns)
                throw FormatFault("the row has fewer cells than the first one");
            work(cells);
        } catch (FormatFault& fault) {
            fault.line = rows.line();
            throw;
        }
    }
}

Survey surveyOf(LineReader& lines, const std::vector<AddressColumn>& columns)
{
    Survey survey;
    std::vector<CsvCell> headings;
    lines.restart();
    (void)CsvRows(lines).next(headings, columns.size());
    survey.utf8 = std::ranges::all_of(headings, isValidUtf8, &CsvCell::text);
    forEachRow(lines, columns.size(), [&](const std::vector<CsvCell>& cells) {
        for (std::size_t at = 0; at < cells.size(); ++at) {
            survey.utf8 = survey.utf8 && isValidUtf8(cells[at].text);
            if (columns[at].field == Field::Birthday)
                survey.order.add(cells[at].text);
        }
    });
    return survey;
}

// One value of a cell. It contains views of the row's texts and of the headings. Copies would take too much memory,
// because a cell can have millions of values.
struct Value {
    std::string_view text;
    std::string_view name;  // the name under which LeftOut counts the value
    std::string_view label;
    Rank rank;
};

// The values of a row. They are grouped by the field of the contact to which they belong.
class ContactValues {
public:
    ContactValues(const std::vector<AddressColumn>& columns, const std::vector<std::string>& texts, LeftOut& leftOut)
        : leftOut_(leftOut)
    {
        for (std::size_t at = 0; at < texts.size(); ++at) {
            const AddressColumn& column = columns[at];
            if (column.field == Field::LeftOut && !texts[at].empty())
                leftOut.add(column.heading);
            else if (column.field != Field::Ignored)
                add(column, texts[at], column.label ? std::string_view(texts[*column.label]) : "");
        }
    }

    // Of the values of `field`, returns the one with the highest rank. Counts the other values as left out.
    std::optional<Value> take(Field field)
    {
        std::vector<Value>& values = values_[field];
        const auto best = std::ranges::max_element(values, {}, &Value::rank);
        if (best == values.end())
            return std::nullopt;
        for (const Value& value : values)
            if (&value != &*best)
                leftOut_.add(value.name);
        return *best;
    }
    std::string takeText(Field field)
    {
        const auto value = take(field);
        return std::string(value ? value->text : "");
    }
    const std::vector<Value>& all(Field field) { return values_[field]; }

private:
    // A cell can have several values: "+1 555 ::: +1 556".
    void add(const AddressColumn& column, std::string_view text, std::string_view label)
    {
        const bool several = column.field != Field::Notes;
        const Rank rank = label.empty() ? column.rank : rankOf(label);
        while (!text.empty()) {
            const std::size_t end = several ? text.find(BetweenValues) : std::string_view::npos;
            const std::string_view value = several ? trimmed(text.substr(0, end)) : text;
            if (!value.empty())
                values_[column.field].push_back({value, column.heading, label, rank});
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + BetweenValues.size());
        }
    }

    std::map<Field, std::vector<Value>> values_;
    LeftOut& leftOut_;
};

// Returns the contact's companies, mail addresses and telephone numbers, sorted. A display name (Field::ShownName) can
// be a copy of one of these texts.
std::vector<std::string_view> textsToRepeat(ContactValues& values)
{
    std::vector<std::string_view> texts;
    for (const Field field : {Field::Company, Field::Mail, Field::Telephone})
        for (const Value& value : values.all(field))
            texts.push_back(value.text);
    std::ranges::sort(texts);
    return texts;
}

// A contact of a device has no display name (Field::ShownName). Ignores each display name that repeats the contact's
// name, a part of that name, a company, a mail address or a telephone number. If the contact has neither a FirstName
// nor a LastName, the first of the remaining display names in the row becomes the LastName. All others are counted as
// left out.
void takeName(ContactValues& values, Record& contact, LeftOut& leftOut)
{
    std::string last = values.takeText(Field::LastName);
    const std::string first = values.takeText(Field::FirstName);
    const bool hasName = !last.empty() || !first.empty();
    const std::string repetitions[] = {last, first, first + " " + last, last + ", " + first, last + " " + first};
    const std::vector<std::string_view> others = textsToRepeat(values);
    for (const Value& shown : values.all(Field::ShownName)) {
        const bool repeats = std::ranges::binary_search(others, shown.text) ||
                             std::ranges::find(repetitions, shown.text) != std::end(repetitions);
        if (!hasName && last.empty() && !repeats)
            last = shown.text;
        else if (!repeats)
            leftOut.add(shown.name);
    }
    addUtf8(contact, personal::LastName, last);
    addUtf8(contact, personal::FirstName, first);
}

void takeTelephone(ContactValues& values, Record& contact, LeftOut& leftOut)
{
    const auto telephone = values.take(Field::Telephone);
    if (!telephone)
        return;
    addUtf8(contact, personal::HomeTelephone, telephone->text);
    if (telephone->rank != Rank::Home)
        leftOut.add(std::string(telephone->name) + " (" + std::string(telephone->label) +
                    (telephone->label.empty() ? "" : ", ") + "imported as home)");
}

// Adds the categories to the contact. Skips each category that begins with "* ", such as "* myContacts". Such a
// category is a built-in group of the program that wrote the file, and says nothing about a single contact.
void takeCategories(ContactValues& values, Record& contact)
{
    std::string categories;
    for (const Value& category : values.all(Field::Categories))
        if (!category.text.starts_with("* "))
            categories.append(categories.empty() ? "" : ";").append(category.text);
    addUtf8(contact, personal::Categories, categories);
}

// Reads a birthday from one column, or from three columns for the day, the month and the year.
void takeBirthday(ContactValues& values, Record& contact, DayOrder order, LeftOut& leftOut)
{
    const auto year = values.take(Field::BirthYear);
    const auto month = values.take(Field::BirthMonth);
    const auto day = values.take(Field::Birthday);
    if (!year && !month && !day)
        return;
    const auto textOf = [](const std::optional<Value>& value) { return std::string(value ? value->text : ""); };
    const std::string text = year || month ? textOf(day) + "." + textOf(month) + "." + textOf(year) : textOf(day);
    if (isNoDate(text))
        return;
    const auto time = text.starts_with(NoYear) || text.ends_with(NoYear) ? std::nullopt : dayFrom(text, order);
    if (time)
        contact.add(personal::Birthday, 0, {.filetime = *time});
    else
        leftOut.add((day ? *day : year ? *year : *month).name);
}

// Converts line ends to CR LF, which the device uses.
std::string withLineEnds(std::string_view text)
{
    std::string notes;
    for (const char c : text)
        notes += c == '\n' && !notes.ends_with('\r') ? "\r\n" : std::string(1, c);
    return notes;
}

Record contactOf(ContactValues& values, DayOrder order, LeftOut& leftOut)
{
    Record contact;
    takeName(values, contact, leftOut);
    addUtf8(contact, personal::Company, values.takeText(Field::Company));
    takeTelephone(values, contact, leftOut);
    addUtf8(contact, personal::Mail, values.takeText(Field::Mail));
    addUtf8(contact, personal::Town, values.takeText(Field::Town));
    takeCategories(values, contact);
    takeBirthday(values, contact, order, leftOut);
    if (const std::string notes = withLineEnds(values.takeText(Field::Notes)); !notes.empty())
        contact.addBlob(personal::Notes, 0, notes);
    return contact;
}

}  // namespace

std::vector<std::string> textsOf(const std::vector<CsvCell>& row)
{
    std::vector<std::string> texts;
    texts.reserve(row.size());
    for (const CsvCell& cell : row)
        texts.push_back(isValidUtf8(cell.text) ? cell.text : toUtf8(cell.text, UsualCharacterSet));
    return texts;
}

void readAddressBook(LineReader& lines, const std::vector<AddressColumn>& columns, DatabaseTarget& target,
                     LeftOut& leftOut)
{
    const Survey survey = surveyOf(lines, columns);
    const DayOrder order = survey.order.found().value_or(DayOrder::MonthFirst);
    const std::size_t database = target.begin({personal::ContactsName,
                                               personal::ContactsType,
                                               {std::begin(personal::ContactsSort), std::end(personal::ContactsSort)}});
    if (!survey.utf8)
        leftOut.note("The file isn't UTF-8 and was read as Windows-1252");
    if (survey.order.isNeeded() && !survey.order.found())
        leftOut.note(
            "It isn't certain whether dates begin with the month or the day; they were read with the month first");
    Decoder decoder(UsualCharacterSet);
    forEachRow(lines, columns.size(), [&](const std::vector<CsvCell>& cells) {
        std::vector<std::string> texts(cells.size());
        std::ranges::transform(cells, texts.begin(), [&](const CsvCell& cell) {
            return survey.utf8 ? cell.text : decoder.toUtf8(cell.text);
        });
        ContactValues values(columns, texts, leftOut);
        const Record contact = contactOf(values, order, leftOut);
        if (!contact.properties().empty())
            target.add(database, contact.properties());
    });
}

}  // namespace database_formats
