// registry_names.h - the registry's predefined keys, and the limits of names and values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform::registry {

// Row numbers of the predefined keys.
inline constexpr std::int64_t ClassesRootRow = 1;
inline constexpr std::int64_t CurrentUserRow = 2;
inline constexpr std::int64_t LocalMachineRow = 3;
inline constexpr std::int64_t UsersRow = 4;

// The names of the predefined keys, in the order of their row numbers.
inline constexpr std::u16string_view PredefinedNames[] = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER",
                                                          u"HKEY_LOCAL_MACHINE", u"HKEY_USERS"};

// The platform's limits: characters of a key's or value's name, and levels below the predefined key.
inline constexpr std::size_t NameLimit = 255;
inline constexpr int LevelLimit = 16;

// The largest number of bytes of a value. It limits the memory that reading a registry file can need. Real values are
// far smaller.
inline constexpr std::size_t ValueBytesLimit = std::size_t{16} * 1024 * 1024;

// The path of a key: its predefined key and the names of the levels below.
struct KeyPath {
    std::int64_t root = 0;  // a row number from 1 to 4
    std::vector<std::u16string> levels;
};

// Whether the name is valid UTF-16, without lone surrogates, so that the database can store it.
[[nodiscard]] bool isText(std::u16string_view name);

}  // namespace platform::registry
