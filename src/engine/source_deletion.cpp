#include "source_deletion.h"

#include "ce/outcome.h"
#include "ce/text.h"

namespace {

void ReportNotDeleted(const WCHAR* path, DWORD error)
{
    // A file that doesn't exist any more is treated as deleted.
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
    StoredSource& source = deletion.sources[deletion.collected++];
    CopyText(source.path, path);
    source.stamp = stamp;
    if (deletion.collected == DeletionGroup)
        DeleteCollected(deletion, listFile, dataFile);
}

void DeleteCollected(SourceDeletion& deletion, HANDLE listFile, HANDLE dataFile)
{
    if (deletion.collected == 0)
        return;
    // The data file is flushed first, so that the list on the disk never has an entry whose data isn't on the disk.
    if (!FlushFileBuffers(dataFile) || !FlushFileBuffers(listFile)) {
        ForbidDeletion(deletion);
        return;
    }
    for (DWORD i = 0; i < deletion.collected; i++) {
        const StoredSource& source = deletion.sources[i];
        if (!DeleteUnchangedFile(source.path, &source.stamp))
            ReportNotDeleted(source.path, GetLastError());
    }
    deletion.collected = 0;
}

void ForbidDeletion(SourceDeletion& deletion)
{
    for (DWORD i = 0; i < deletion.collected; i++)
        ReportNotDeleted(deletion.sources[i].path, ERROR_WRITE_FAULT);
    deletion.forbidden = TRUE;
    deletion.collected = 0;
}
