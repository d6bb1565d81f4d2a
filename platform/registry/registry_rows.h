// registry_rows.h - finds, writes and deletes the rows of the registry's keys and values. Names are compared without
// case.
#pragma once

#include "database/connection.h"

#include "ce/types.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace platform::registry {

struct FoundKey {
    std::int64_t row = 0;
    bool made = false;
};

// Finds the key of that name below `parent`, or creates it. Returns Done or the kind of failure.
[[nodiscard]] database::Step openOrMakeKey(database::Connection& connection, std::int64_t parent,
                                           std::u16string_view name, FoundKey& key);

// Returns the statement that reads one value. Its row has the columns type and data. It has no row if the value is
// missing.
[[nodiscard]] database::Statement valueOf(database::Connection& connection, std::int64_t key, std::u16string_view name);

// Sets or replaces a value. Returns Done or the kind of failure.
[[nodiscard]] database::Step writeValue(database::Connection& connection, std::int64_t key, std::u16string_view name,
                                        DWORD type, std::span<const std::byte> data);

// Returns the statement that reads the keys directly below `parent`, ordered by name without case. The columns are the
// key's number and its name.
[[nodiscard]] database::Statement keysBelow(database::Connection& connection, std::int64_t parent);

// Returns the statement that reads the values of a key, ordered by name without case. The default value comes first,
// because its name is empty. The columns are name, type and data.
[[nodiscard]] database::Statement valuesOf(database::Connection& connection, std::int64_t key);

// Deletes a value, or a key with all below it, if it exists. Returns Done or the kind of failure.
[[nodiscard]] database::Step removeValue(database::Connection& connection, std::int64_t key, std::u16string_view name);
[[nodiscard]] database::Step removeKey(database::Connection& connection, std::int64_t parent, std::u16string_view name);

// Finds the key of that name below `parent`. Returns Row if it exists, Done if it doesn't, or the kind of failure.
[[nodiscard]] database::Step findKey(database::Connection& connection, std::int64_t parent, std::u16string_view name,
                                     std::int64_t& key);

// Deletes all values and all keys except the predefined ones. Returns Done or the kind of failure.
[[nodiscard]] database::Step removeEverything(database::Connection& connection);

}  // namespace platform::registry
