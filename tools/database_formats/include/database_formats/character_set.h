// character_set.h - converts texts in other character sets to UTF-8.
#pragma once

#include <memory>
#include <string>

namespace database_formats {

// The assumed character set of a text that isn't UTF-8 and doesn't name its character set. Programs on Windows write
// such texts.
inline constexpr const char* UsualCharacterSet = "WINDOWS-1252";

// Converts texts from one character set. For many texts this is faster than toUtf8() below, because the converter is
// opened only once.
class Decoder {
public:
    // Throws a FormatFault if the set isn't known.
    explicit Decoder(std::string characterSet);

    // Returns the bytes as UTF-8. Throws a FormatFault if they aren't valid in the character set.
    std::string toUtf8(std::string bytes);

private:
    struct Closer {
        void operator()(void* converter) const;
    };

    std::string characterSet_;
    std::unique_ptr<void, Closer> converter_;
};

// Converts a single text. Throws a FormatFault in the same cases as the class Decoder.
std::string toUtf8(std::string bytes, const std::string& characterSet);

}  // namespace database_formats
