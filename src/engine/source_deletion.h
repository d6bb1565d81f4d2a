// source_deletion.h - deletes sources after they were stored, for the option "Delete backuped files".
//
// A source is deleted when its whole stream is in the data file, its entry is in the list, and both files are on the
// disk. If the source has changed since it was read, it isn't deleted. Flushing a file to a card takes tens of
// milliseconds. Therefore the stored sources are collected in a group. Both files are flushed once for the whole group,
// and then its sources are deleted. After a failed flush, or if the list is damaged, no more sources of the run are
// deleted. A source that should have been deleted but wasn't is reported.
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
    DWORD collected;  // number of used elements in `sources`
    StoredSource sources[DeletionGroup];
};

// Adds a source to the group of collected sources. The source must be stored whole. If this makes the group full, calls
// DeleteCollected. If deletion is forbidden, only reports the source as not deleted. `stamp` is the source's stamp,
// taken before the source was read.
void DeleteWhenOnDisk(SourceDeletion& deletion, const WCHAR* path, const FileStamp& stamp, HANDLE listFile,
                      HANDLE dataFile);

// Flushes both files and then deletes the collected sources. If a flush fails, neither these sources nor any later ones
// are deleted.
void DeleteCollected(SourceDeletion& deletion, HANDLE listFile, HANDLE dataFile);

// Forbids the deletion of sources for the rest of the run. Reports the sources that are collected so far as not
// deleted.
void ForbidDeletion(SourceDeletion& deletion);
