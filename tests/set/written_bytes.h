// written_bytes.h - bytes of the formats, written by hand.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

// Returns the bytes of hexadecimal digits such as "51 42 58".
inline std::string hex(const std::string& digits)
{
    std::istringstream pairs(digits);
    std::string bytes;
    for (unsigned value = 0; pairs >> std::hex >> value;)
        bytes += static_cast<char>(value);
    return bytes;
}

inline std::string repeated(const std::string& piece, std::size_t times)
{
    std::string all;
    for (; times > 0; --times)
        all += piece;
    return all;
}

inline std::string numberBytes(std::uint32_t value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

inline std::string utf16(std::u16string_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// Returns the characters of an ASCII text with its terminator.
inline std::string textBytes(const std::string& text)
{
    return utf16(std::u16string(text.begin(), text.end()) + u'\0');
}

// Returns an entry of a list file.
inline std::string entryBytes(char kind, const std::string& name, std::uint32_t start, std::uint32_t end)
{
    return std::string{kind, 1} + numberBytes(static_cast<std::uint32_t>(name.size()) + 1) + textBytes(name) +
           numberBytes(start) + numberBytes(end);
}
