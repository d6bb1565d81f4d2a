// database_image.h - writes a database of the object store to an image file, and makes a database from an image file
// (docs/format.md, "Database image"). RestoreDatabase is defined in database_restore.cpp.
//
// All calls are made on the run's thread, which executes a backup or a restore.
#pragma once

#include "ce/types.h"

// Writes the image of database "Name" into the file "Name.CDB" in the root of the device. An old file is replaced.
// Returns 0 if the database, its description or a record can't be read, or if the database has more or fewer records
// than its description says. The image has a record without properties in place of each record that is missing or can't
// be read. If a call of the store fails because of the disk, damaged data or a lack of memory, the store reports the
// failure to the user.
//
// The image file itself doesn't affect the result. If the database and its description can be read but the image file
// can't be created, the result is 1. An image file that couldn't be written completely is deleted, so that no
// incomplete image is stored in the set. If `made` isn't null, it receives whether a new file was created. If none was
// created, a file that exists at the path is the user's.
BOOL DumpDatabase(const WCHAR* name, BOOL* made = nullptr);

enum RestoreResult {
    RestoreFailed = 0,    // not everything could be restored; GetLastError() is the reason
    RestoreDone = 1,      // all records are in the database and on the disk
    RestoreDeclined = 2,  // the user didn't allow a replacement; nothing was changed
};

// Makes a database from an image and leaves the image file unchanged. The database gets the name that the image
// contains.
//
// The restore can replace up to two databases. One has the name that belongs to the path: "sub\Name" for
// "\sub\Name.CDB". The other has the name that the image contains, if the two names differ. The user is asked before a
// database is replaced. The replacement is one transaction of the store. So the old databases are still whole after
// RestoreFailed, or if the process is killed before the end. If no database is to be replaced, RestoreFailed can leave
// a new database with the records that could be restored.
//
// After RestoreFailed the last error is 38 if the image ends too early, 31 if the image or the store is damaged, 87 if
// no database can have the name, and 8 if there is no memory. Otherwise it is the error of the file or store call that
// failed, for example 112 if the disk has no room.
RestoreResult RestoreDatabase(const WCHAR* imagePath);
