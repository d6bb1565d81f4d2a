#include "line_reader.h"

#include "database_formats/format_fault.h"

namespace database_formats {

namespace {

constexpr std::size_t PieceBytes = 65536;

void refuseUtf16(std::string_view begin)
{
    if (begin.starts_with("\xFF\xFE") || begin.starts_with("\xFE\xFF"))
        throw FormatFault("the file is UTF-16; save it as UTF-8");
}

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
}

bool LineReader::fill()
{
    buffer_.resize(PieceBytes);
    in_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    rest_ = {buffer_.data(), static_cast<std::size_t>(in_.gcount())};
    if (in_.bad())
        throw FormatFault("the file can't be read further");
    if (number_ == 0)
        refuseUtf16(rest_);
    return !rest_.empty();
}

}  // namespace database_formats
