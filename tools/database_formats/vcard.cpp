#include "vcard.h"

#include "component.h"
#include "contact_card.h"
#include "line_decoding.h"
#include "written_text.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <iterator>

namespace database_formats {

namespace {

// Converts the escapes of a vCard of version 2.1. The version applies to all lines, but the line with the version may
// come after other lines. So the function needs the whole vCard.
void convertEscapes(Component& card)
{
    if (std::ranges::none_of(card.lines,
                             [](const ContentLine& line) { return line.name == "VERSION" && line.value == "2.1"; }))
        return;
    for (ContentLine& line : card.lines)
        line.value = withLaterEscapes(line.value);
}

DatabaseHead contactsHead()
{
    return {personal::ContactsName,
            personal::ContactsType,
            {std::begin(personal::ContactsSort), std::end(personal::ContactsSort)}};
}

}  // namespace

void VCardWriter::begin(const DatabaseHead& head)
{
    if (head.type != personal::ContactsType)
        throw FormatFault("vCard holds contacts, databases of type 24; this one's type is " +
                          std::to_string(head.type));
}

void VCardWriter::add(std::span<const CEPROPVAL> properties)
{
    Component card = cardOf(properties);
    card.add("UID", escaped(identifiers_.of(properties)));
    out_ << writtenText(card, contactFrom, properties, leftOut_);
}

void readVCards(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut)
{
    ComponentReader cards(lines, "");
    std::optional<std::size_t> database;
    while (auto card = cards.next()) {
        if (card->name != "VCARD") {
            leftOut.add(card->name);
            continue;
        }
        if (!database)
            database = target.begin(contactsHead());
        convertEscapes(*card);
        const Record contact = contactFrom(*card, leftOut);
        const auto isIdentifier = [](const CEPROPVAL& property) { return property.propid == personal::Identifier; };
        if (std::ranges::all_of(contact.properties(), isIdentifier))
            leftOut.add("VCARD");
        else
            target.add(*database, contact.properties());
    }
    if (database)
        return;
    if (leftOut.count() != 0)
        throw FormatFault("there is no card in the file");
    (void)target.begin(contactsHead());  // a file without vCards is the export of an empty database
}

}  // namespace database_formats
