// database_image.h - writes a database of the object store to an image file and makes a database from one
// (docs/format.md, "Database image"). Independent of sets. RestoreDatabase is defined in database_restore.cpp.
//
// The run's thread only.
#pragma once

#include "ce/types.h"

// Writes the image of a database into "%s.CDB" in the root of the device. An old file is replaced.
// 1: all records were read, or the image can't be created. An image that couldn't be written whole is deleted, so that
//    packing it fails instead of storing less than the database has.
// 0: the database can't be opened or isn't whole: a record can't be read (it is empty in the image), or there are
//    more or fewer records than the database says. The store reports each of these to its host.
// `made`, if it isn't null, is whether a new file was created. If it is false, a file at the path is the user's.
BOOL DumpDatabase(const WCHAR* name, BOOL* made = nullptr);

enum RestoreResult {
    RestoreFailed = 0,    // the database lacks something of the image; GetLastError() is the reason
    RestoreDone = 1,      // all records are in the database and on the disk
    RestoreDeclined = 2,  // the user didn't allow a replacement; nothing was changed
};

// Makes a database from an image, whose file is left. The database gets the name in the image.
//
// The user is asked before a database is replaced: the one with the name in the path, "sub\Name" for "\sub\Name.CDB",
// and the one with the name in the image, if that is another one. The replacement is one change of the store: after
// RestoreFailed, or if the process is killed, the old database is still whole. If there is nothing to replace,
// RestoreFailed leaves all records that could be restored.
//
// Errors: 38 the image ends too early, 31 the image or the store is damaged, 87 no database can have its name, 112 no
// room, 8 no memory, and those of the file calls.
RestoreResult RestoreDatabase(const WCHAR* imagePath);
