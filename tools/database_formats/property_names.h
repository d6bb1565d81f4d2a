// property_names.h - the columns of CSV by names that people know, for the databases of contacts, appointments, tasks.
#pragma once

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace database_formats {

// What a record of contacts, appointments or tasks has as a rule, in the usual order; nothing for other databases, in
// which the names don't mean what they say.
[[nodiscard]] std::span<const CEPROPID> usualProperties(DWORD databaseType);

// "LastName", or the eight hexadecimal digits of an id without a name.
[[nodiscard]] std::string nameOf(CEPROPID id);

// A name or eight hexadecimal digits; nothing for any other text.
[[nodiscard]] std::optional<CEPROPID> propertyNamed(std::string_view name);

}  // namespace database_formats
