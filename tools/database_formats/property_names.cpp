#include "database_formats/property_names.h"

#include "hex_digits.h"

#include "ce/personal_databases.h"

#include <algorithm>

namespace database_formats {

namespace {

struct PropertyName {
    CEPROPID id;
    std::string_view name;
};

constexpr PropertyName propertyNames[] = {
    {personal::Subject, "Subject"},
    {personal::Notes, "Notes"},
    {personal::Categories, "Categories"},
    {personal::Identifier, "Identifier"},
    {personal::LastName, "LastName"},
    {personal::FirstName, "FirstName"},
    {personal::Company, "Company"},
    {personal::HomeTelephone, "HomeTelephone"},
    {personal::Mail, "Mail"},
    {personal::Town, "Town"},
    {personal::Birthday, "Birthday"},
    {personal::Start, "Start"},
    {personal::Minutes, "Minutes"},
    {personal::Place, "Place"},
    {personal::ReminderMinutes, "ReminderMinutes"},
    {personal::Repetition, "RepetitionDays"},
    {personal::Due, "Due"},
    {personal::Done, "Done"},
    {personal::Priority, "Priority"},
};

constexpr CEPROPID contactProperties[] = {personal::LastName,      personal::FirstName, personal::Company,
                                          personal::HomeTelephone, personal::Mail,      personal::Town,
                                          personal::Categories,    personal::Birthday,  personal::Notes};

constexpr CEPROPID appointmentProperties[] = {
    personal::Subject,         personal::Place,      personal::Start,      personal::Minutes,
    personal::ReminderMinutes, personal::Repetition, personal::Categories, personal::Notes};

constexpr CEPROPID taskProperties[] = {personal::Subject,  personal::Categories, personal::Due,
                                       personal::Priority, personal::Done,       personal::Notes};

}  // namespace

std::span<const CEPROPID> usualProperties(DWORD databaseType)
{
    switch (databaseType) {
    case personal::ContactsType:
        return contactProperties;
    case personal::AppointmentsType:
        return appointmentProperties;
    case personal::TasksType:
        return taskProperties;
    default:
        return {};
    }
}

std::string nameOf(CEPROPID id)
{
    const auto* const known = std::ranges::find(propertyNames, id, &PropertyName::id);
    return known != std::end(propertyNames) ? std::string(known->name) : hexadecimal(id, 8);
}

std::optional<CEPROPID> propertyNamed(std::string_view name)
{
    const auto* const known = std::ranges::find(propertyNames, name, &PropertyName::name);
    if (known != std::end(propertyNames))
        return known->id;
    const auto id = name.size() == 8 ? fromHexadecimal(name) : std::nullopt;
    return id ? std::optional(static_cast<CEPROPID>(*id)) : std::nullopt;
}

}  // namespace database_formats
