// source_deletion.h - the option "Delete backuped files".
//
// A source is deleted when its stream is whole and in the data file, the list names it, both files are on the disk, and
// the source hasn't changed since it was read. A flush of a file takes a card tens of milliseconds, so sources are
// collected and deleted in groups. After a failed flush or a damaged list no more sources of the run are deleted. A
// source that should be deleted and isn't is reported.
#pragma once

#include "ce/file.h"
#include "ce/file_stamp.h"

inline constexpr DWORD DeletionGroup = 64;

struct StoredSource {
    WCHAR path[MAX_PATH];
    FileStamp stamp;
};

struct SourceDeletion {
    BOOL forbidden;
    DWORD collected;  // in `sources`
    StoredSource sources[DeletionGroup];
};

// Adds a source that is stored whole. A full group is deleted. `stamp` is that of the source when it was read.
void DeleteWhenOnDisk(SourceDeletion& deletion, const WCHAR* path, const FileStamp& stamp, HANDLE listFile,
                      HANDLE dataFile);

// Flushes both files and then deletes the collected sources. If a flush fails, these and all later ones are kept.
void DeleteCollected(SourceDeletion& deletion, HANDLE listFile, HANDLE dataFile);

// Keeps the collected sources and all later ones of the run.
void ForbidDeletion(SourceDeletion& deletion);
