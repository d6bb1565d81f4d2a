// database_image.h - writes a database of the object store to an image file, and makes a database from an image file
// (docs/format.md, "Database image"). RestoreDatabase is defined in database_restore.cpp.
//
// All calls are made on the run's thread.
#pragma once

#include "ce/types.h"

// Writes the image of database "Name" into the file "Name.CDB" in the root of the device. An old file is replaced.
// 1: All records were read, or the image file couldn't be created. If the image file couldn't be written completely,
//    it is deleted. Then it can't be packed, so no incomplete image is stored in the set.
// 0: The database can't be opened, a record can't be read, or the database has more or fewer records than its
//    description says. The image has an empty record in place of one that can't be read. The store reports each of
//    these failures to the host.
// If `made` isn't null, it receives whether a new file was created. If none was created, a file that exists at the path
// is the user's.
BOOL DumpDatabase(const WCHAR* name, BOOL* made = nullptr);

enum RestoreResult {
    RestoreFailed = 0,    // the database lacks a part of the image; GetLastError() is the reason
    RestoreDone = 1,      // all records are in the database and on the disk
    RestoreDeclined = 2,  // the user didn't allow a replacement; nothing was changed
};

// Makes a database from an image and leaves the image file unchanged. The database gets the name that the image
// contains.
//
// The restore can replace two databases. One has the name from the path: "sub\Name" for "\sub\Name.CDB". The other has
// the name in the image, if the two names differ. The user is asked before a database is replaced. The replacement is
// one change of the store. So the old databases are still whole after RestoreFailed, or if the process is killed. If no
// database is to be replaced, the new database has all records that could be restored, even after RestoreFailed.
//
// Errors: 38 if the image ends too early, 31 if the image or the store is damaged, 87 if no database can have the name,
// 112 if the disk has no room, 8 if there is no memory, and the errors of the file calls.
RestoreResult RestoreDatabase(const WCHAR* imagePath);
