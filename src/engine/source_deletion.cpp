// source_deletion.cpp - see source_deletion.h.

#include "source_deletion.h"

#include "ce/text.h"
#include "ce/time.h"

namespace {

bool SameFile(const SourceStamp& before, const SourceStamp& now)
{
    return before.known && now.known && before.indexHigh == now.indexHigh && before.indexLow == now.indexLow &&
           before.sizeHigh == now.sizeHigh && before.sizeLow == now.sizeLow &&
           CompareFileTime(&before.lastWrite, &now.lastWrite) == 0;
}

}  // namespace

SourceStamp StampOf(const WCHAR* path)
{
    SourceStamp stamp = {};
    HANDLE file = CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return stamp;
    BY_HANDLE_FILE_INFORMATION information = {};
    stamp.known = GetFileInformationByHandle(file, &information);
    stamp.indexHigh = information.nFileIndexHigh;
    stamp.indexLow = information.nFileIndexLow;
    stamp.sizeHigh = information.nFileSizeHigh;
    stamp.sizeLow = information.nFileSizeLow;
    stamp.lastWrite = information.ftLastWriteTime;
    CloseHandle(file);
    return stamp;
}

void DeleteWhenOnDisk(SourceDeletion& deletion, const WCHAR* path, const SourceStamp& stamp, HANDLE listFile,
                      HANDLE dataFile)
{
    if (deletion.forbidden || !stamp.known)
        return;
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
        // Changed since it was read: the set has the old content, so the new one stays.
        if (SameFile(source.stamp, StampOf(source.path)))
            (void)DeleteFileW(source.path);  // it stays if it can't go, and nothing is lost
    }
    deletion.waiting = 0;
}

void ForbidDeletion(SourceDeletion& deletion)
{
    deletion.forbidden = TRUE;
    deletion.waiting = 0;
}
