// GetLocaleInfoW. It returns the short date format that setShortDateFormat has set, or else that of the host's LC_TIME.
#include "time/clock.h"

#include "text/host_name.h"

#include <algorithm>
#include <langinfo.h>
#include <locale.h>
#include <memory>
#include <mutex>

namespace platform::time {

namespace {

// The low 16 bits of GetLocaleInfoW's argument `setting` are the setting itself, and the high 16 bits are flags.
constexpr DWORD settingMask = 0xFFFF;

struct ChosenFormat {
    std::mutex mutex;
    std::u16string format;
};

ChosenFormat& chosenFormat()
{
    static ChosenFormat chosen;
    return chosen;
}

// The date format of the environment's locale, not of the process's. If that locale isn't installed, the format of the
// locale C is used.
std::string hostDateFormat()
{
    struct Freed {
        void operator()(locale_t locale) const { freelocale(locale); }
    };
    const std::unique_ptr<std::remove_pointer_t<locale_t>, Freed> locale(newlocale(LC_TIME_MASK, "", nullptr));
    return locale ? nl_langinfo_l(D_FMT, locale.get()) : "%m/%d/%y";
}

// Returns the platform's text for one conversion of strftime, such as "dd" for 'd'. Returns an empty text if the
// conversion isn't part of a date. `unpadded` means no leading zeros.
std::u16string_view pictureOf(char conversion, bool unpadded)
{
    switch (conversion) {
    case 'd':
        return unpadded ? u"d" : u"dd";
    case 'e':
        return u"d";
    case 'm':
        return unpadded ? u"M" : u"MM";
    case 'b':
    case 'h':
        return u"MMM";
    case 'B':
        return u"MMMM";
    case 'y':
    case 'g':
        return u"yy";
    case 'Y':
    case 'G':
        return u"yyyy";
    case 'a':
        return u"ddd";
    case 'A':
        return u"dddd";
    case 'D':
        return u"MM/dd/yy";
    case 'F':
        return u"yyyy-MM-dd";
    case 'n':
    case 't':
        return u" ";
    case '%':
        return u"%";
    default:
        return {};
    }
}

bool isLetter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

}  // namespace

void setShortDateFormat(std::u16string format)
{
    const std::scoped_lock lock(chosenFormat().mutex);
    chosenFormat().format = std::move(format);
}

std::u16string pictureOfDateFormat(std::string_view hostFormat)
{
    std::u16string picture;
    while (!hostFormat.empty()) {
        if (hostFormat.front() == '%') {
            // Between '%' and the letter there can be flags, and the modifiers E and O for another calendar or other
            // digits.
            const std::size_t letter = std::min(hostFormat.find_first_not_of("-_0^#EO", 1), hostFormat.size());
            const bool unpadded = hostFormat.substr(1, letter - 1).find('-') != std::string_view::npos;
            if (letter < hostFormat.size())
                picture += pictureOf(hostFormat[letter], unpadded);
            hostFormat.remove_prefix(std::min(letter + 1, hostFormat.size()));
            continue;
        }
        const auto* end = std::find_if(hostFormat.begin(), hostFormat.end(), [&](char character) {
            return character == '%' || isLetter(character) != isLetter(hostFormat.front());
        });
        const std::u16string literal = text::fromUtf8({hostFormat.begin(), end});
        picture += isLetter(hostFormat.front()) ? u"'" + literal + u"'" : literal;
        hostFormat.remove_prefix(static_cast<std::size_t>(end - hostFormat.begin()));
    }
    return picture;
}

}  // namespace platform::time

int GetLocaleInfoW(LCID locale, DWORD setting, WCHAR* out, int characters)
{
    using namespace platform::time;
    const auto fail = [](DWORD error) {
        SetLastError(error);
        return 0;
    };
    if ((setting & ~settingMask) != 0)
        return fail(ERROR_INVALID_FLAGS);
    if (locale != LOCALE_SYSTEM_DEFAULT || setting != LOCALE_SSHORTDATE || characters < 0 ||
        (characters > 0 && out == nullptr))
        return fail(ERROR_INVALID_PARAMETER);

    auto& chosen = chosenFormat();
    const std::scoped_lock lock(chosen.mutex);
    const std::u16string format = chosen.format.empty() ? pictureOfDateFormat(hostDateFormat()) : chosen.format;
    const int size = static_cast<int>(format.size()) + 1;
    if (characters == 0)
        return size;
    if (characters < size)
        return fail(ERROR_INSUFFICIENT_BUFFER);
    std::copy_n(format.c_str(), size, out);
    return size;
}
