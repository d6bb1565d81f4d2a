#include "contact_card.h"

#include "component_fields.h"
#include "database_formats/format_fault.h"
#include "database_formats/value_text.h"
#include "moment_text.h"

#include "ce/personal_databases.h"

#include <algorithm>

namespace database_formats {

namespace {

using namespace personal;

// A name (N) or an address (ADR) consists of several parts. A contact can hold the parts with the following indexes. A
// value is split into at most MostParts parts.
constexpr std::size_t LastNamePart = 0;
constexpr std::size_t FirstNamePart = 1;
constexpr std::size_t TownPart = 3;
constexpr std::size_t MostParts = 8;

// Types of telephone numbers that aren't for calls. Such a number is imported only if the vCard has no other number.
constexpr std::string_view NotForCalls[] = {"FAX", "PAGER", "MODEM", "BBS"};

// Lines about the vCard itself, not about the contact.
constexpr std::string_view IgnoredOfCards[] = {"VERSION", "PRODID", "REV", "X-ABSHOWAS"};

void addName(Component& card, const std::string& last, const std::string& first,
             std::initializer_list<std::string> others)
{
    std::string shown = first + (first.empty() || last.empty() ? "" : " ") + last;
    for (const std::string& other : others)
        if (shown.empty())
            shown = other;
    card.add("FN", escaped(shown));
    card.add("N", escaped(last) + ";" + escaped(first) + ";;;");
}

void addBirthday(Component& card, std::span<const CEPROPVAL> contact)
{
    const CEPROPVAL* birthday = propertyIn(contact, Birthday);
    const auto day = birthday != nullptr ? momentOf(birthday->val.filetime) : std::nullopt;
    if (!day)
        return;
    const bool midnight = day->hour == 0 && day->minute == 0 && day->second == 0;
    card.add("BDAY", midnight ? basicDate(*day) : basicTime(*day));
}

// Splits a value such as a name (N) or an address (ADR) into its parts, and records which of them take() has returned.
class StructuredValue {
public:
    explicit StructuredValue(const ContentLine* line)
    {
        if (line != nullptr)
            parts_ = partsOf(line->value, ';', MostParts);
        unused_ = std::vector<bool>(parts_.size(), true);
    }
    std::string take(std::size_t part)
    {
        if (part >= parts_.size())
            return {};
        unused_[part] = false;
        return unescaped(parts_[part]);
    }
    // True if the value has content in any part that take() hasn't returned.
    bool hasMore() const
    {
        for (std::size_t part = 0; part < parts_.size(); ++part)
            if (unused_[part] && !parts_[part].empty())
                return true;
        return false;
    }

private:
    std::vector<std::string_view> parts_;
    std::vector<bool> unused_;
};

std::string withoutScheme(std::string text)
{
    for (const std::string_view scheme : {"tel:", "mailto:"})
        if (inCapitals(text).starts_with(inCapitals(scheme)))
            text.erase(0, scheme.size());
    return text;
}

// If N has neither a first nor a last name, FN becomes the last name. For a contact without a name, addName() writes
// the company, the mail address or the telephone number as FN. So an FN that repeats one of these values doesn't become
// the last name.
void takeName(ComponentFields& fields, Record& contact, const Component& card)
{
    StructuredValue name(fields.take("N"));
    std::string last = name.take(LastNamePart);
    const std::string first = name.take(FirstNamePart);
    if (name.hasMore())
        fields.leaveOut("N");
    const ContentLine* shown = fields.take("FN");
    const std::string text = shown != nullptr ? unescaped(shown->value) : std::string();
    const bool repeats =
        shown != nullptr && std::ranges::any_of(card.lines, [&](const ContentLine& line) {
            return (line.name == "ORG" && partsOf(line.value, ';', MostParts).front() == shown->value) ||
                   ((line.name == "TEL" || line.name == "EMAIL") && line.value == shown->value);
        });
    const bool hasName = !last.empty() || !first.empty();
    if (!hasName && !repeats)
        last = text;
    else if (hasName && !text.empty() && text != first + " " + last && text != first + last)
        fields.leaveOut("FN");
    addUtf8(contact, LastName, last);
    addUtf8(contact, FirstName, first);
}

// A contact of a device can have a home telephone number, but no other number. So the best number of the card becomes
// the home number, even if it has another type, such as WORK. That type is then counted as left out. If a number has
// the type HOME and further types, the further types aren't counted, except FAX.
void takeTelephone(ComponentFields& fields, Record& contact)
{
    const ContentLine* telephone = fields.take("TEL", "HOME", NotForCalls);
    if (telephone == nullptr)
        return;
    addUtf8(contact, HomeTelephone, withoutScheme(unescaped(telephone->value)));
    for (const std::string_view type : {"CELL", "WORK", "FAX", "PAGER", "MODEM", "BBS", "CAR", "VIDEO"})
        if (telephone->hasType(type) && (!telephone->hasType("HOME") || type == "FAX"))
            fields.leaveOut("TEL (" + std::string(type) + ", imported as home)");
}

// Returns the date without its time zone, because a birthday is the same day in every zone. Returns nothing if the
// value isn't a complete date that exists. Examples are a value without a year and a value that is marked as text. Such
// a value is no reason to refuse the whole file.
std::optional<FILETIME> birthdayIn(const ContentLine& line)
{
    // Some versions of vCard require a year in every date. For a birthday without a year, programs then write a
    // placeholder for the year, and repeat it in the parameter X-APPLE-OMIT-YEAR.
    const std::string_view noYear = line.parameter("X-APPLE-OMIT-YEAR");
    if (inCapitals(line.parameter("VALUE")) == "TEXT" || (!noYear.empty() && line.value.starts_with(noYear)))
        return std::nullopt;
    try {
        return fileTimeOf(momentFrom(trimmed(line.value)));
    } catch (const FormatFault&) {
        return std::nullopt;
    }
}

void takeBirthday(ComponentFields& fields, Record& contact)
{
    const ContentLine* line = fields.take("BDAY");
    if (line == nullptr)
        return;
    if (const auto time = birthdayIn(*line))
        contact.add(Birthday, 0, {.filetime = *time});
    else
        fields.leaveOut("BDAY");
}

}  // namespace

Component cardOf(std::span<const CEPROPVAL> contact)
{
    Component card{"VCARD", {}, {}, 0};
    card.add("VERSION", "4.0");
    const std::string company = textIn(contact, Company);
    const std::string telephone = textIn(contact, HomeTelephone);
    const std::string mail = textIn(contact, Mail);
    addName(card, textIn(contact, LastName), textIn(contact, FirstName), {company, mail, telephone});
    addTextLine(card, "ORG", company);
    if (!telephone.empty())
        card.add("TEL", escaped(telephone), {{"TYPE", "home"}});
    addTextLine(card, "EMAIL", mail);
    const std::string town = textIn(contact, Town);
    if (!town.empty())
        card.add("ADR", ";;;" + escaped(town) + ";;;", {{"TYPE", "home"}});
    addCategories(card, textIn(contact, Categories));
    addBirthday(card, contact);
    addNotes(card, "NOTE", contact);
    return card;
}

Record contactFrom(const Component& card, LeftOut& leftOut)
{
    Record contact;
    ComponentFields fields(card, leftOut);
    takeName(fields, contact, card);
    StructuredValue organisation(fields.take("ORG"));
    addUtf8(contact, Company, organisation.take(0));
    if (organisation.hasMore())
        fields.leaveOut("ORG");
    takeTelephone(fields, contact);
    if (const ContentLine* mail = fields.take("EMAIL"))
        addUtf8(contact, Mail, withoutScheme(unescaped(mail->value)));
    StructuredValue address(fields.take("ADR", "HOME"));
    addUtf8(contact, Town, address.take(TownPart));
    if (address.hasMore())
        fields.leaveOut("ADR");
    fields.takeCategories(contact);
    takeBirthday(fields, contact);
    fields.takeNotes(contact, "NOTE");
    fields.takeText(contact, "UID", Identifier);
    for (const Component& part : card.parts)
        fields.leaveOut(part.name);
    fields.leaveRest(IgnoredOfCards);
    return contact;
}

}  // namespace database_formats
