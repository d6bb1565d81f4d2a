// ce/text.h - formats, copies and compares wide texts, and converts them to the device's code page.
//
// Every destination is passed with its size in characters, including the NUL. A text that doesn't fit is cut at a whole
// character (a surrogate pair stays whole), and the result is always terminated. wcsncpy and WideCharToMultiByte are
// exceptions, which their comments describe.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

#include <span>
#include <type_traits>

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

// One argument of a format: a whole number or a wide text. The values that callers pass are converted to this type
// implicitly.
class FormatArgument {
public:
    template <class T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>) constexpr FormatArgument(T value)
        : bytes_(sizeof(T)), integer_(static_cast<std::int64_t>(value))
    {
    }
    constexpr FormatArgument(const WCHAR* text) : bytes_(0), text_(text) {}

    [[nodiscard]] constexpr bool isText() const { return bytes_ == 0; }
    [[nodiscard]] constexpr std::int64_t integer() const { return integer_; }
    [[nodiscard]] constexpr unsigned bytes() const { return bytes_; }
    [[nodiscard]] constexpr const WCHAR* text() const { return text_; }

private:
    unsigned bytes_;  // size of the integer as it was passed, so that %u and %x show its own bits; 0 for a text
    union {
        std::int64_t integer_;
        const WCHAR* text_;
    };
};

// Formats into `out`, which has room for `capacity` characters including the NUL. Supports %s %d %u %x %%, each with an
// optional width, and with optional zeros before a number. The program uses no other formats. A real device supports
// more. %s is a wide text, and a null text shows as "(null)". A conversion without an argument, or with one of the
// wrong type, produces no output. Returns the number of characters that it has written, without the NUL.
int FormatWide(WCHAR* out, std::size_t capacity, const WCHAR* format, std::span<const FormatArgument> arguments);

// wnsprintfW and wsprintfW are the platform's calls for formatting. Both call FormatWide. wsprintfW takes the capacity
// from the size of the array `out`.
template <class... Arguments>
int wnsprintfW(WCHAR* out, std::size_t capacity, const WCHAR* format, const Arguments&... arguments)
{
    if constexpr (sizeof...(Arguments) == 0) {
        return FormatWide(out, capacity, format, {});
    } else {
        const FormatArgument list[] = {FormatArgument(arguments)...};
        return FormatWide(out, capacity, format, list);
    }
}

template <std::size_t Capacity, class... Arguments>
int wsprintfW(WCHAR (&out)[Capacity], const WCHAR* format, const Arguments&... arguments)
{
    return wnsprintfW(out, Capacity, format, arguments...);
}

// Returns the number of characters before the NUL.
std::size_t wcslen(const WCHAR* text);

// Writes exactly `count` characters. If the text is shorter, NULs follow it. If the text has `count` characters or
// more, its first `count` characters are written without a NUL.
WCHAR* wcsncpy(WCHAR* out, const WCHAR* text, std::size_t count);

// Copies a text into an array of `capacity` characters. A text that doesn't fit is cut at a whole character.
// Returns the number of copied characters.
std::size_t CopyText(WCHAR* out, std::size_t capacity, const WCHAR* text);

template <std::size_t Capacity>
std::size_t CopyText(WCHAR (&out)[Capacity], const WCHAR* text)
{
    return CopyText(out, Capacity, text);
}

// Returns 0 if the texts are equal, case included. Otherwise the result is negative or positive, depending on the first
// code unit that differs.
int lstrcmpW(const WCHAR* left, const WCHAR* right);

// Compares like lstrcmpW, but without case. Each character is converted by simple case folding.
int lstrcmpiW(const WCHAR* left, const WCHAR* right);

// Skips blanks, reads an optional sign and digits, and ignores the rest. Returns 0 if there are no digits. A number
// outside the range of LONG becomes the nearest number in the range.
LONG _wtol(const WCHAR* text);

// The device's code page: always CP_UTF8, so a log can contain any name.
UINT GetACP();

// Converts to `codePage` (CP_ACP or CP_UTF8). With `characters` -1 the text ends at its NUL, which is converted and
// counted, too. With `bytes` 0 the call only returns the size. A lone surrogate becomes U+FFFD. `defaultCharacter` and
// `usedDefault` must be null. Returns the number of bytes.
// Returns 0 on failure. The last error is 122 if `out` is too small, and the content of `out` is undefined in this
// case. It is 1004 if `flags` isn't 0, and 87 if another argument is invalid.
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* text, int characters, char* out, int bytes,
                        const char* defaultCharacter, BOOL* usedDefault);
