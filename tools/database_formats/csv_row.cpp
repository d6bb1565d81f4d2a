#include "csv_row.h"

#include "database_formats/format_fault.h"

#include <algorithm>
#include <string_view>

namespace database_formats {

bool CsvRows::next(std::vector<CsvCell>& row, std::size_t mostCells)
{
    do {
        rowBytes_ = 0;
        if (!readLine())
            return false;
        line_ = lines_.number();
    } while (text_.empty());
    if (separator_ == 0 && text_.starts_with(ByteOrderMark))
        text_.erase(0, ByteOrderMark.size());
    row.clear();
    for (std::size_t at = 0;; ++at) {
        if (row.size() == mostCells)
            refuse("the row has more cells than the first one");
        CsvCell& cell = row.emplace_back();
        const bool quoted = at < text_.size() && text_[at] == '"';
        if (quoted)
            at = takeQuoted(at + 1, cell);
        if (separator_ == 0)  // after takeQuoted(), because a quoted first cell can contain other separators
            determineSeparator(at);
        if (!quoted)
            at = takePlain(at, cell);
        if (at == text_.size())
            return true;
        if (text_[at] != separator_)
            refuse("a closing quote isn't followed by a separator or the end of the row");
    }
}

void CsvRows::determineSeparator(std::size_t offset)
{
    const std::size_t first = text_.find_first_of(",;\t", offset);
    separator_ = first == std::string::npos ? ',' : text_[first];
}

bool CsvRows::readLine()
{
    if (!lines_.next(text_, LongestRecord - rowBytes_))
        return false;
    rowBytes_ += text_.size();
    carriageReturn_ = text_.ends_with('\r');
    if (carriageReturn_)
        text_.pop_back();
    if (text_.find('\0') != std::string::npos)
        throw FormatFault("there is a NUL in the line");
    return true;
}

// `offset` is the offset after the opening quote. Returns the offset after the closing quote.
std::size_t CsvRows::takeQuoted(std::size_t offset, CsvCell& cell)
{
    cell.quoted = true;
    for (;;) {
        const std::size_t quote = text_.find('"', offset);
        if (quote != std::string::npos) {
            cell.text.append(text_, offset, quote - offset);
            offset = quote + 1;
            if (offset == text_.size() || text_[offset] != '"')
                return offset;
            cell.text += '"';
            ++offset;
            continue;
        }
        cell.text.append(text_, offset, std::string::npos);
        cell.text += carriageReturn_ ? "\r\n" : "\n";
        if (!readLine())
            refuse("a quote isn't closed");
        offset = 0;
    }
}

std::size_t CsvRows::takePlain(std::size_t offset, CsvCell& cell) const
{
    const std::size_t end = std::min(text_.find(separator_, offset), text_.size());
    cell.text.assign(text_, offset, end - offset);
    if (cell.text.find_first_of("\"\r") != std::string::npos)
        refuse("a cell without quotes around it has a quote or a CR in it");
    return end;
}

void CsvRows::refuse(const char* what) const
{
    FormatFault fault(what);
    fault.line = line_;
    throw fault;
}

}  // namespace database_formats
