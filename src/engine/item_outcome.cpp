#include "item_outcome.h"

#include "ce/file.h"
#include "ce/outcome.h"

bool StopsBefore(const ItemKind& kind, const WCHAR* name)
{
    if (!JobIsToStop())
        return false;
    ReportItem(OutcomeNotReached, kind.reportedAs, name, ERROR_SUCCESS);
    return true;
}

void ReportReplacedFile(const WCHAR* path)
{
    ReportItem(OutcomeReplaced, OutcomeFile, path, ERROR_SUCCESS);
}

TemporaryFile ExpectTemporaryFile(const WCHAR* path)
{
    const bool existed = IsNothingAt(path) == FALSE;
    (void)DeclareTemporaryFile(path);
    return {path, existed};
}

// The call that makes the file can fail after it has replaced the user's file. RegCopyFile then deletes its incomplete
// file. So if a file existed and nothing is at the path now, the user's file is reported as replaced.
bool IsOwnFile(const TemporaryFile& file, bool made)
{
    if (file.existed && (made || IsNothingAt(file.path)))
        ReportReplacedFile(file.path);
    return made || !file.existed;
}
