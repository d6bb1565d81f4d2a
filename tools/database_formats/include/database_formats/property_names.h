// property_names.h - the names of the properties of contacts, appointments and tasks, for the columns of CSV.
#pragma once

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace database_formats {

// The usual properties of a contact, an appointment or a task, in the usual order. Empty for other types of databases:
// the names don't apply to their properties.
std::span<const CEPROPID> usualProperties(DWORD databaseType);

// "LastName". If the property has no name: its id in eight hexadecimal digits.
std::string nameOf(CEPROPID id);

// From a name or eight hexadecimal digits. Nothing for another text.
std::optional<CEPROPID> propertyNamed(std::string_view name);

}  // namespace database_formats
