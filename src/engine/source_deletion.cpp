// source_deletion.cpp - see source_deletion.h.

#include "source_deletion.h"

#include "ce/outcome.h"
#include "ce/text.h"

namespace {

void ReportNotDeleted(const WCHAR* path, DWORD error)
{
    // What is gone already needs no deletion.
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
        ReportItem(OutcomeNotDeleted, OutcomeFile, path, error);
}

}  // namespace

void DeleteWhenOnDisk(SourceDeletion& deletion, const WCHAR* path, const FileStamp& stamp, HANDLE listFile,
                      HANDLE dataFile)
{
    if (deletion.forbidden) {
        ReportNotDeleted(path, ERROR_WRITE_FAULT);
        return;
    }
    StoredSource& source = deletion.sources[deletion.waiting++];
    CopyText(source.path, path);
    source.stamp = stamp;
    if (deletion.waiting == DeletionGroup)
        DeleteWaiting(deletion, listFile, dataFile);
}

void DeleteWaiting(SourceDeletion& deletion, HANDLE listFile, HANDLE dataFile)
{
    if (deletion.waiting == 0)
        return;
    // The data first: a list on the disk never names bytes that aren't.
    if (!FlushFileBuffers(dataFile) || !FlushFileBuffers(listFile)) {
        ForbidDeletion(deletion);
        return;
    }
    for (DWORD i = 0; i < deletion.waiting; i++) {
        const StoredSource& source = deletion.sources[i];
        if (!DeleteUnchangedFile(source.path, &source.stamp))
            ReportNotDeleted(source.path, GetLastError());
    }
    deletion.waiting = 0;
}

void ForbidDeletion(SourceDeletion& deletion)
{
    for (DWORD i = 0; i < deletion.waiting; i++)
        ReportNotDeleted(deletion.sources[i].path, ERROR_WRITE_FAULT);
    deletion.forbidden = TRUE;
    deletion.waiting = 0;
}
