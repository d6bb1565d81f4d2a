// source_deletion.h - "Delete backuped files": a source goes only when nothing can be lost by it.
//
// A source is deleted when its stream is whole and in the data file, the list names it, both are on the disk, and the
// source is still what was read. Putting a file on the disk takes a card tens of milliseconds, so sources wait here and
// go in groups. After a fault of the list or of a flush none goes any more in that run. A source that was to be deleted
// and stays is reported.
#pragma once

#include "ce/file.h"
#include "ce/file_deletion.h"

inline constexpr DWORD DeletionGroup = 64;

struct StoredSource {
    WCHAR path[MAX_PATH];
    FileStamp stamp;
};

struct SourceDeletion {
    BOOL forbidden;
    DWORD waiting;
    StoredSource sources[DeletionGroup];
};

// Adds a source that is stored whole; when the group is full, it goes. `stamp` is what the source was when it was read.
void DeleteWhenOnDisk(SourceDeletion& deletion, const WCHAR* path, const FileStamp& stamp, HANDLE listFile,
                      HANDLE dataFile);

// Brings both files to the disk and then deletes what waits. If that fails, what waits stays, and all that follows.
void DeleteWaiting(SourceDeletion& deletion, HANDLE listFile, HANDLE dataFile);

// From here on no source of this run is deleted, those that wait included.
void ForbidDeletion(SourceDeletion& deletion);
