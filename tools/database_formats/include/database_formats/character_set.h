// character_set.h - texts of other programs that aren't UTF-8.
#pragma once

#include <string>

namespace database_formats {

// What programs on Windows write if they don't name the character set.
inline constexpr const char* UsualCharacterSet = "WINDOWS-1252";

// The bytes of the character set as UTF-8. Throws a FormatFault if the set isn't known, or the bytes aren't valid in
// it.
std::string toUtf8(std::string bytes, const std::string& characterSet);

}  // namespace database_formats
