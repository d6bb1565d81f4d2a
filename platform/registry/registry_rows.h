// registry_rows.h - the registry's tables: keys by number, values by key and name, names without case.
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

// The key of that name below `parent`, made if it is missing. Done, or what failed.
[[nodiscard]] database::Step openOrMakeKey(database::Connection& connection, std::int64_t parent,
                                           std::u16string_view name, FoundKey& key);

// Prepares the reading of one value: a row of type and data, if there is one.
[[nodiscard]] database::Statement valueOf(database::Connection& connection, std::int64_t key, std::u16string_view name);

// Sets or replaces a value. Done, or what failed.
[[nodiscard]] database::Step writeValue(database::Connection& connection, std::int64_t key, std::u16string_view name,
                                        DWORD type, std::span<const std::byte> data);

// Rows of number and name: the keys right below `parent`. Ordered by name without case, as the next one.
[[nodiscard]] database::Statement keysBelow(database::Connection& connection, std::int64_t parent);

// Rows of name, type and data: the values of a key, the default one first.
[[nodiscard]] database::Statement valuesOf(database::Connection& connection, std::int64_t key);

// Takes away all keys but the predefined ones, and all values. Done, or what failed.
[[nodiscard]] database::Step removeEverything(database::Connection& connection);

}  // namespace platform::registry
