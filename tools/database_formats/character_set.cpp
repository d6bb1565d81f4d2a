#include "database_formats/character_set.h"

#include "database_formats/format_fault.h"
#include "database_formats/left_out.h"

#include <iconv.h>

#include <memory>

namespace database_formats {

std::string toUtf8(std::string bytes, const std::string& characterSet)
{
    struct Closer {
        using pointer = iconv_t;
        void operator()(iconv_t converter) const { iconv_close(converter); }
    };
    const iconv_t opened = iconv_open("UTF-8", characterSet.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1))  // NOLINT: the documented result of a failure
        throw FormatFault("the character set \"" + shownName(characterSet) + "\" isn't known");
    const std::unique_ptr<iconv_t, Closer> converter(opened);
    std::string utf8(bytes.size() * 4 + 16, '\0');
    char* in = bytes.data();
    char* out = utf8.data();
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = utf8.size();
    constexpr auto Failed = static_cast<std::size_t>(-1);
    // The second call flushes the converter: it can hold back a letter that the next byte could have combined with.
    if (iconv(converter.get(), &in, &inLeft, &out, &outLeft) == Failed ||
        iconv(converter.get(), nullptr, nullptr, &out, &outLeft) == Failed)
        throw FormatFault("a value isn't valid in the character set \"" + shownName(characterSet) + "\"");
    utf8.resize(utf8.size() - outLeft);
    return utf8;
}

}  // namespace database_formats
