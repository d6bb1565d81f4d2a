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
    const bool existed = GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
    (void)DeclareTemporaryFile(path);
    return {path, existed};
}

bool IsOwnFile(const TemporaryFile& file, bool made)
{
    if (made && file.existed)
        ReportReplacedFile(file.path);
    return made || !file.existed;
}
