#include "text_lines.h"

#include "database_formats/value_text.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include <iconv.h>

namespace quillbox_set {

namespace {

constexpr std::size_t LongestPart = std::size_t{1} << 19;  // in UTF-16 units; a longer line is passed on in parts
constexpr std::string_view Mark8 = "\xEF\xBB\xBF";
constexpr std::string_view Mark16Little = "\xFF\xFE";
constexpr std::string_view Mark16Big = "\xFE\xFF";

// Returns the name of the encoding, or null if the piece isn't UTF-16. In a UTF-16 text in a Western language, the
// upper byte of most units is a NUL, and the lower byte of no unit is a NUL.
const char* encodingOfUtf16(std::string_view piece)
{
    std::size_t nuls[2] = {};
    for (std::size_t at = 0; at < piece.size(); at++)
        nuls[at % 2] += piece[at] == '\0' ? 1 : 0;
    const std::size_t many = piece.size() / 4;
    if (nuls[0] == 0 && nuls[1] > many)
        return "UTF-16LE";
    return nuls[1] == 0 && nuls[0] > many ? "UTF-16BE" : nullptr;
}

bool isControl(char c)
{
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 && std::string_view("\t\n\r\f\x1A\x1B").find(c) == std::string_view::npos;
}

// If a UTF-8 character of two to four bytes can begin with this byte, returns how many bytes the character has.
// Otherwise returns 0.
std::size_t lengthFrom(char lead)
{
    const auto code = static_cast<unsigned char>(lead);
    return code >= 0xC2 && code < 0xE0 ? 2 : code >= 0xE0 && code < 0xF0 ? 3 : code >= 0xF0 && code < 0xF5 ? 4 : 0;
}

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// Returns whether the piece is UTF-8. The piece may end inside a character.
bool isUtf8(std::string_view piece)
{
    std::size_t cut = 0;
    while (cut < 3 && cut < piece.size() && isContinuation(piece[piece.size() - 1 - cut]))
        cut++;
    cut = cut < piece.size() && lengthFrom(piece[piece.size() - 1 - cut]) > cut + 1 ? cut + 1 : 0;
    return database_formats::isValidUtf8(piece.substr(0, piece.size() - cut));
}

// Returns the name of the encoding for iconv. Returns null if the file isn't a text.
const char* encodingOf(std::string_view piece)
{
    if (piece.starts_with(Mark16Little))
        return "UTF-16LE";
    if (piece.starts_with(Mark16Big))
        return "UTF-16BE";
    if (piece.find('\0') != std::string_view::npos)
        return encodingOfUtf16(piece);
    if (std::ranges::any_of(piece, isControl))
        return nullptr;
    return isUtf8(piece) ? "UTF-8" : "CP1252";
}

}  // namespace

bool TextLines::begin(std::string_view piece)
{
    const char* const encoding = encodingOf(piece);
    if (!encoding)
        return false;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv reports a failure
    if (iconv_t opened = ::iconv_open("UTF-16LE", encoding); opened != reinterpret_cast<iconv_t>(-1))
        converter_.reset(opened);
    else
        throw std::runtime_error(std::string("this system can't decode ") + encoding);
    const bool marked = piece.starts_with(Mark8) || piece.starts_with(Mark16Little) || piece.starts_with(Mark16Big);
    if (marked)
        piece.remove_prefix(piece.starts_with(Mark8) ? Mark8.size() : Mark16Little.size());
    decode(piece);
    return true;
}

bool TextLines::add(std::span<const std::byte> piece)
{
    const std::string_view bytes(reinterpret_cast<const char*>(piece.data()), piece.size());
    if (!converter_)
        return begin(bytes);
    decode(cut_.empty() ? bytes : cut_ += bytes);
    return true;
}

void TextLines::decode(std::string_view piece)
{
    std::string kept(piece);  // iconv takes no constant bytes
    char* in = kept.data();
    std::size_t left = kept.size();
    cut_.clear();
    char16_t units[4096];
    while (left > 0) {
        char* out = reinterpret_cast<char*>(units);
        std::size_t room = sizeof units;
        const std::size_t result = ::iconv(converter_.get(), &in, &left, &out, &room);
        const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
        split({units, (sizeof units - room) / sizeof(char16_t)});
        if (error == EINVAL) {  // the piece ends inside a character
            cut_.assign(in, left);
            return;
        }
        if (error == EILSEQ) {
            split(u"\uFFFD");
            in++;
            left--;
        }
    }
}

void TextLines::split(std::u16string_view text)
{
    for (const char16_t unit : text) {
        const bool isReturn = unit == u'\r';
        const bool isFeed = unit == u'\n';
        if (isReturn || (isFeed && !afterReturn_)) {
            passOn();
            number_++;
        } else if (!isFeed) {
            line_ += unit;
            if (line_.size() >= LongestPart)
                passOn();
        }
        afterReturn_ = isReturn;
    }
}

void TextLines::passOn()
{
    sink_(line_, number_);
    line_.clear();
}

void TextLines::finish()
{
    if (!line_.empty())
        passOn();
}

void TextLines::Close::operator()(void* converter) const
{
    ::iconv_close(converter);
}

}  // namespace quillbox_set
