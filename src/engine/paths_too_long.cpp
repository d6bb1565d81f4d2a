#include "engine/paths_too_long.h"

#include "engine/questions.h"

#include "ce/dialog.h"
#include "ce/error.h"
#include "ce/outcome.h"
#include "ce/text.h"

PathsTooLong gPathsTooLong;

void NotePathTooLong(const WCHAR* folder, const WCHAR* name)
{
    // The paths of a walk below a marked folder have no leading backslash.
    WCHAR path[2 * MAX_PATH];
    wsprintfW(path, folder[0] == u'\\' ? u"%s%s" : u"\\%s%s", folder, name);
    if (gPathsTooLong.count++ == 0)
        CopyText(gPathsTooLong.first, path);
    if (gPathsTooLong.areItems)
        ReportItem(OutcomeNotStored, OutcomeFile, path, ERROR_FILENAME_EXCED_RANGE);
}

void ShowPathsTooLong(const PathsTooLong& left)
{
    if (left.count == 0)
        return;
    WCHAR text[TextChars + 2 * MAX_PATH];
    if (left.count == 1)
        wsprintfW(text, u"1 path is too long and was left out:\n%s", left.first);
    else
        wsprintfW(text, u"%u paths are too long and were left out. The first is:\n%s", left.count, left.first);
    MessageBoxW(gMainWindow, text, u"Info", MB_OK | MB_ICONEXCLAMATION);
}
