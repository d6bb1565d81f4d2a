#include "address_columns.h"

#include "content_line.h"
#include "database_formats/format_fault.h"
#include "database_formats/left_out.h"
#include "database_formats/property_names.h"

#include <algorithm>

namespace database_formats {

namespace {

struct KnownHeading {
    std::string_view name;  // folded, with # in place of each number
    Field field;
    Rank rank = Rank::Other;
};

// The headings of Outlook, Google and Thunderbird, in English and German.
constexpr KnownHeading knownHeadings[] = {
    {"last name", Field::LastName},
    {"family name", Field::LastName},
    {"nachname", Field::LastName},
    {"first name", Field::FirstName},
    {"given name", Field::FirstName},
    {"vorname", Field::FirstName},
    {"name", Field::ShownName},
    {"display name", Field::ShownName},
    {"file as", Field::ShownName},
    {"anzeigename", Field::ShownName},
    {"company", Field::Company},
    {"organization", Field::Company},
    {"organization name", Field::Company},
    {"organization # - name", Field::Company},
    {"firma", Field::Company},
    {"organisation", Field::Company},
    {"home phone", Field::Telephone, Rank::Home},
    {"home phone #", Field::Telephone, Rank::Home},
    {"telefon (privat)", Field::Telephone, Rank::Home},
    {"telefon (privat #)", Field::Telephone, Rank::Home},
    {"telefon privat", Field::Telephone, Rank::Home},
    {"telefon privat #", Field::Telephone, Rank::Home},
    {"tel. privat", Field::Telephone, Rank::Home},
    {"phone # - value", Field::Telephone},
    {"primary phone", Field::Telephone},
    {"mobile phone", Field::Telephone},
    {"mobile phone #", Field::Telephone},
    {"mobile number", Field::Telephone},
    {"business phone", Field::Telephone},
    {"business phone #", Field::Telephone},
    {"work phone", Field::Telephone},
    {"other phone", Field::Telephone},
    {"car phone", Field::Telephone},
    {"radio phone", Field::Telephone},
    {"company main phone", Field::Telephone},
    {"callback", Field::Telephone},
    {"isdn", Field::Telephone},
    {"haupttelefon", Field::Telephone},
    {"mobiltelefon", Field::Telephone},
    {"mobiltelefon #", Field::Telephone},
    {"mobil-tel.-nr.", Field::Telephone},
    {"telefon geschäftlich", Field::Telephone},
    {"telefon geschäftlich #", Field::Telephone},
    {"telefon (geschäftlich)", Field::Telephone},
    {"telefon (geschäftlich #)", Field::Telephone},
    {"tel. dienstlich", Field::Telephone},
    {"weiteres telefon", Field::Telephone},
    {"autotelefon", Field::Telephone},
    {"telefon firma", Field::Telephone},
    {"rückmeldung", Field::Telephone},
    {"home fax", Field::Telephone, Rank::HomeMachine},
    {"fax privat", Field::Telephone, Rank::HomeMachine},
    {"business fax", Field::Telephone, Rank::Machine},
    {"other fax", Field::Telephone, Rank::Machine},
    {"fax number", Field::Telephone, Rank::Machine},
    {"pager", Field::Telephone, Rank::Machine},
    {"pager number", Field::Telephone, Rank::Machine},
    {"fax geschäftlich", Field::Telephone, Rank::Machine},
    {"weiteres fax", Field::Telephone, Rank::Machine},
    {"fax-nummer", Field::Telephone, Rank::Machine},
    {"pager-nummer", Field::Telephone, Rank::Machine},
    {"e-mail address", Field::Mail},
    {"e-mail # address", Field::Mail},
    {"e-mail # - value", Field::Mail},
    {"primary email", Field::Mail},
    {"secondary email", Field::Mail},
    {"e-mail-adresse", Field::Mail},
    {"e-mail #: adresse", Field::Mail},
    {"e-mail #-adresse", Field::Mail},
    {"primäre e-mail-adresse", Field::Mail},
    {"sekundäre e-mail-adresse", Field::Mail},
    {"home city", Field::Town, Rank::Home},
    {"ort privat", Field::Town, Rank::Home},
    {"ort (privat)", Field::Town, Rank::Home},
    {"privat: ort", Field::Town, Rank::Home},
    {"address # - city", Field::Town},
    {"business city", Field::Town},
    {"work city", Field::Town},
    {"other city", Field::Town},
    {"ort geschäftlich", Field::Town},
    {"dienstlich: ort", Field::Town},
    {"weiterer ort", Field::Town},
    {"birthday", Field::Birthday},
    {"geburtstag", Field::Birthday},
    {"birth day", Field::Birthday},
    {"birth year", Field::BirthYear},
    {"geburtsjahr", Field::BirthYear},
    {"birth month", Field::BirthMonth},
    {"geburtsmonat", Field::BirthMonth},
    {"categories", Field::Categories},
    {"labels", Field::Categories},
    {"group membership", Field::Categories},
    {"kategorien", Field::Categories},
    {"notes", Field::Notes},
    {"notizen", Field::Notes},
};

// Quillbox's own names of the properties. A user writes them in a ColumnMap.
constexpr KnownHeading ownNames[] = {
    {"LastName", Field::LastName},
    {"FirstName", Field::FirstName},
    {"Company", Field::Company},
    {"HomeTelephone", Field::Telephone, Rank::Home},
    {"Mail", Field::Mail},
    {"Town", Field::Town, Rank::Home},
    {"Categories", Field::Categories},
    {"Birthday", Field::Birthday},
    {"Notes", Field::Notes},
    {"", Field::Ignored},
};

// Column names that both our own tables and other programs' address books use.
constexpr std::string_view AlsoOfOthers[] = {"Subject", "Priority", "Company", "Birthday", "Categories", "Notes"};

// Returns "e-mail # address" for "E-mail 2 Address".
std::string withoutNumbers(std::string_view heading)
{
    std::string name;
    for (const char c : folded(heading)) {
        const bool digit = c >= '0' && c <= '9';
        if (!digit || !name.ends_with('#'))
            name += digit ? '#' : c;
    }
    return name;
}

const KnownHeading* knownHeading(std::string_view heading)
{
    const auto* const found = std::ranges::find(knownHeadings, withoutNumbers(heading), &KnownHeading::name);
    return found != std::end(knownHeadings) ? found : nullptr;
}

const KnownHeading* ownName(std::string_view name)
{
    const auto* const found = std::ranges::find(ownNames, name, &KnownHeading::name);
    return found != std::end(ownNames) ? found : nullptr;
}

bool isOurs(std::string_view heading)
{
    return propertyNamed(heading) && std::ranges::find(AlsoOfOthers, heading) == std::end(AlsoOfOthers);
}

bool isOfOthers(const std::string& heading)
{
    return knownHeading(heading) != nullptr && !propertyNamed(heading);
}

// Connects columns with their label columns. "Phone 1 - Label" or "Phone 1 - Type" says what kind of number is in
// "Phone 1 - Value".
void connectLabels(std::vector<AddressColumn>& columns)
{
    constexpr std::string_view Separator = " - ";
    std::map<std::string, std::size_t> labels;  // the label column of each prefix such as "phone 1"
    for (std::size_t at = 0; at < columns.size(); ++at) {
        const std::string name = folded(columns[at].heading);
        const std::size_t end = name.rfind(Separator);
        if (end != std::string::npos && (name.ends_with(" - label") || name.ends_with(" - type")))
            labels.emplace(name.substr(0, end), at);
    }
    for (AddressColumn& column : columns) {
        const std::string name = folded(column.heading);
        const auto label = labels.find(name.substr(0, name.rfind(Separator)));
        if (column.field == Field::LeftOut || column.field == Field::Ignored || label == labels.end())
            continue;
        if (column.field == Field::Telephone || column.field == Field::Town)
            column.label = label->second;
        columns[label->second].field = Field::Ignored;
    }
}

}  // namespace

std::optional<std::vector<AddressColumn>> addressColumns(const std::vector<std::string>& headings,
                                                         const ColumnMap& columns)
{
    if (columns.empty() && (std::ranges::any_of(headings, isOurs) || std::ranges::none_of(headings, isOfOthers)))
        return std::nullopt;
    std::vector<AddressColumn> found;
    for (const std::string& heading : headings) {
        const auto mapped = columns.find(folded(heading));
        const KnownHeading* known = mapped != columns.end() ? ownName(mapped->second) : knownHeading(heading);
        if (known == nullptr && !heading.empty())
            known = ownName(heading);
        found.push_back(known != nullptr ? AddressColumn{heading, known->field, known->rank, {}}
                                         : AddressColumn{heading, Field::LeftOut, Rank::Other, {}});
    }
    connectLabels(found);
    return found;
}

Rank rankOf(std::string_view label)
{
    const std::string kind = folded(label);
    const auto says = [&](std::string_view word) { return kind.find(word) != std::string::npos; };
    const bool home = says("home") || says("privat");
    if (says("fax") || says("pager"))
        return home ? Rank::HomeMachine : Rank::Machine;
    return home ? Rank::Home : Rank::Other;
}

std::string folded(std::string_view text)
{
    std::string small(trimmed(text));
    for (char& c : small)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return small;
}

ColumnMap columnMapFrom(std::istream& in)
{
    ColumnMap columns;
    std::size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (number == 1 && line.starts_with("\xEF\xBB\xBF"))
            line.erase(0, 3);
        if (line.ends_with('\r'))
            line.pop_back();
        const std::size_t equals = line.rfind('=');
        if (trimmed(line).empty() || trimmed(line).starts_with('#'))
            continue;
        const std::string property(equals != std::string::npos ? trimmed(std::string_view(line).substr(equals + 1))
                                                               : "");
        if (equals == std::string::npos || ownName(property) == nullptr) {
            FormatFault fault("this isn't \"COLUMN = PROPERTY\" with a property of a contact: LastName, FirstName, "
                              "Company, HomeTelephone, Mail, Town, Categories, Birthday or Notes");
            fault.line = number;
            throw fault;
        }
        columns.insert_or_assign(folded(std::string_view(line).substr(0, equals)), property);
    }
    return columns;
}

}  // namespace database_formats
