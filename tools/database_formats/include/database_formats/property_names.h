// property_names.h - the names of the properties of contacts, appointments and tasks, for the columns of CSV.
#pragma once

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace database_formats {

// Returns the usual properties of a contact, an appointment or a task, in the usual order. Returns an empty list for
// other types of databases, because the property names of nameOf() don't apply to these databases.
std::span<const CEPROPID> usualProperties(DWORD databaseType);

// Returns the name of the property, such as "LastName". If the property has no name, returns its id in eight
// hexadecimal digits.
std::string nameOf(CEPROPID id);

// Returns the property with this name or id. The id has eight hexadecimal digits. Returns nothing for any other text.
std::optional<CEPROPID> propertyNamed(std::string_view name);

}  // namespace database_formats
