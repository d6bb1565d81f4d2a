#include "line_reader.h"

#include "database_formats/format_fault.h"

#include "text/host_name.h"

namespace database_formats {

namespace {

constexpr std::size_t PieceBytes = 65536;

}  // namespace

bool LineReader::next(std::string& line, std::size_t longest)
{
    line.clear();
    if (rest_.empty() && !fill())
        return false;
    ++number_;
    for (bool ended = false; !ended && (!rest_.empty() || fill());) {
        const std::size_t end = rest_.find('\n');
        ended = end != std::string_view::npos;
        const std::string_view part = rest_.substr(0, end);
        if (part.size() > longest - line.size())
            throw FormatFault("the record is longer than a record of a device can be");
        line += part;
        rest_.remove_prefix(ended ? end + 1 : rest_.size());
    }
    return true;
}

void LineReader::restart()
{
    in_.clear();
    in_.seekg(start_);
    rest_ = {};
    number_ = 0;
    begun_ = false;
    text_.clear();
}

bool LineReader::fill()
{
    buffer_.resize(PieceBytes);
    for (bool ended = false; !ended;) {
        in_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        rest_ = {buffer_.data(), static_cast<std::size_t>(in_.gcount())};
        if (in_.bad())
            throw FormatFault("the file can't be read further");
        ended = rest_.empty();
        if (!begun_)
            determineEncoding();
        begun_ = true;
        if (units_)
            convert(ended);
        if (!rest_.empty())
            return true;
    }
    return false;
}

void LineReader::determineEncoding()
{
    units_.reset();
    if (rest_.starts_with("\xFF\xFE"))
        units_ = std::endian::little;
    else if (rest_.starts_with("\xFE\xFF"))
        units_ = std::endian::big;
    if (units_)
        rest_.remove_prefix(2);
}

// Converts the piece of the file in `rest_` to UTF-8. If the piece ends within a character of two units, the first unit
// stays in `text_` until the next piece is converted.
void LineReader::convert(bool ended)
{
    if (rest_.size() % 2 != 0)
        throw FormatFault("the file ends within a character of UTF-16");
    const std::size_t low = *units_ == std::endian::little ? 0 : 1;
    for (std::size_t at = 0; at < rest_.size(); at += 2)
        text_.push_back(static_cast<char16_t>(static_cast<unsigned char>(rest_[at + low]) |
                                              static_cast<unsigned char>(rest_[at + 1 - low]) << 8));
    const bool halved = !ended && !text_.empty() && (text_.back() & 0xFC00) == 0xD800;
    const std::size_t whole = text_.size() - (halved ? 1 : 0);
    converted_ = platform::text::toUtf8(std::u16string_view(text_).substr(0, whole));
    text_.erase(0, whole);
    rest_ = converted_;
}

}  // namespace database_formats
