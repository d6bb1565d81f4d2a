#include "database_formats/character_set.h"

#include "database_formats/format_fault.h"
#include "database_formats/left_out.h"

#include <iconv.h>

#include <utility>

namespace database_formats {

Decoder::Decoder(std::string characterSet) : characterSet_(std::move(characterSet))
{
    const iconv_t opened = iconv_open("UTF-8", characterSet_.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1))  // NOLINT: the documented result of a failure
        throw FormatFault("the character set \"" + shownName(characterSet_) + "\" isn't known");
    converter_.reset(opened);
}

void Decoder::Closer::operator()(void* converter) const
{
    iconv_close(converter);
}

std::string Decoder::toUtf8(std::string bytes)
{
    if (bytes.empty())  // most cells of a table are empty
        return bytes;
    std::string utf8(bytes.size() * 4 + 16, '\0');
    char* in = bytes.data();
    char* out = utf8.data();
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = utf8.size();
    constexpr auto Failed = static_cast<std::size_t>(-1);
    // Resets the converter to its initial state. An earlier text that was invalid can have changed the state.
    iconv(converter_.get(), nullptr, nullptr, nullptr, nullptr);
    // The first call in the condition converts the bytes. The second one flushes the converter, which can keep back a
    // letter until it sees whether the next byte combines with the letter.
    if (iconv(converter_.get(), &in, &inLeft, &out, &outLeft) == Failed ||
        iconv(converter_.get(), nullptr, nullptr, &out, &outLeft) == Failed)
        throw FormatFault("a value isn't valid in the character set \"" + shownName(characterSet_) + "\"");
    utf8.resize(utf8.size() - outLeft);
    return utf8;
}

std::string toUtf8(std::string bytes, const std::string& characterSet)
{
    return Decoder(characterSet).toUtf8(std::move(bytes));
}

}  // namespace database_formats
