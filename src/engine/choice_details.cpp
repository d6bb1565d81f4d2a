#include "choice_details.h"

#include "set/list_reader.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

#include <algorithm>

namespace {

constexpr std::uint64_t Thousand = 1000;

// Writes the free space as a whole number of at most four digits and a unit. If the unit is KB or larger, the number
// has at least two digits.
void FormatFreeSpace(WCHAR (&detail)[TextChars], std::uint64_t bytes)
{
    const WCHAR* const formats[] = {u"%u bytes free", u"%u KB free", u"%u MB free", u"%u GB free", u"%u TB free"};
    std::size_t unit = 0;
    for (; bytes >= 10 * Thousand && unit + 1 < std::size(formats); unit++)
        bytes /= Thousand;
    wsprintfW(detail, formats[unit], static_cast<DWORD>(bytes));
}

bool ReadComment(const WCHAR* listPath, WCHAR (&comment)[CommentChars])
{
    const HANDLE list =
        CreateFileW(listPath, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (list == INVALID_HANDLE_VALUE)
        return false;
    ListReader reader;
    StartListReader(reader, list);
    const bool whole = ReadListHead(reader, comment) == 0;
    CloseHandle(list);
    return whole;
}

// Returns the beginning of the next line. After the last line this is the terminator.
const WCHAR* NextLine(const WCHAR* line)
{
    while (*line && *line != u'\n')
        line++;
    return *line ? line + 1 : line;
}

// Appends the line without its line end, then a blank. `at` is the length of the text in `detail`. Returns the new
// length.
std::size_t AppendLine(WCHAR (&detail)[TextChars], std::size_t at, const WCHAR* line)
{
    for (; *line && *line != u'\r' && *line != u'\n' && at + 2 < TextChars; line++)
        detail[at++] = *line;
    detail[at++] = u' ';
    return at;
}

}  // namespace

void DescribeStorage(const WCHAR* storage, WCHAR (&detail)[TextChars])
{
    detail[0] = 0;
    const bool isCard = storage[0] == u'\\';
    std::uint64_t available = 0;
    if (GetDiskFreeSpaceExW(isCard ? storage : u"\\", &available, nullptr, nullptr))
        FormatFreeSpace(detail, available);
}

// The first line of a comment is "Backup date:..." and the second is "Comments:". The text of the user follows.
void DescribeSet(const WCHAR* listPath, WCHAR (&detail)[TextChars])
{
    detail[0] = 0;
    WCHAR comment[CommentChars];
    SearchForChoices(TRUE);
    const bool known = ReadComment(listPath, comment);
    SearchForChoices(FALSE);
    if (!known)
        return;
    const WCHAR* date = std::find(comment, comment + wcslen(comment), u':');
    std::size_t at = AppendLine(detail, 0, *date ? date + 1 : comment);
    for (const WCHAR* line = NextLine(NextLine(comment)); *line && at + 2 < TextChars; line = NextLine(line))
        at = AppendLine(detail, at, line);
    detail[at - 1] = 0;  // in place of the last blank
}
