// database_image.h - a database of the object store as a file and back (docs/format.md, "Database image"). Knows
// nothing of sets.
//
// The run's thread only.
#pragma once

#include "ce/types.h"

// Writes the image of a database into "%s.CDB" in the root of the device, over an old one.
// 1: the walk has ended, or no image can be made. One that couldn't be written whole is deleted again, so that its
//    packing fails instead of storing less than the database holds.
// 0: the database can't be opened; or a record can't be read, and an empty one stands in its place.
// `made`, if it isn't null: whether the image was begun. Otherwise what stands at its path is somebody else's.
BOOL DumpDatabase(const WCHAR* name, BOOL* made = nullptr);

// Makes a database from an image, which stays. Its name is that in the image.
//
// Each database that must go for it is asked for first: that of the path's name, and that of the name in the image, if
// it is another one. After a Yes the image is read to its end before anything is deleted: from one that is cut short
// only a new database is made, of its whole records, and one that exists stays as it is. It stays too for an image with
// a name that no database can have.
//
// 1: all records are in the database, on the disk. 0: nothing was changed, or a failure left the records so far.
enum RestoreResult { RestoreFailed = 0, RestoreDone = 1, RestoreDeclined = 2 };
BOOL RestoreDatabase(const WCHAR* imagePath);
