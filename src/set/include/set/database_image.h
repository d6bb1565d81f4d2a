// database_image.h - a database of the object store as a file and back (docs/format.md, "Database image"). Knows
// nothing of sets.
//
// The run's thread only.
#pragma once

#include "ce/types.h"

// Writes the image of a database into "%s.CDB" in the root of the device, over an old one.
// 1: the walk has ended, or no image can be made. One that couldn't be written whole is deleted again, so that its
//    packing fails instead of storing less than the database holds.
// 0: the database can't be opened; or it isn't whole: a record can't be read, and an empty one stands in its place, or
//    it has more or fewer records than it counts. The store tells its host of each.
// `made`, if it isn't null: whether the image was begun. Otherwise what stands at its path is somebody else's.
BOOL DumpDatabase(const WCHAR* name, BOOL* made = nullptr);

enum RestoreResult {
    RestoreFailed = 0,    // something of the image isn't in the store; GetLastError() tells why
    RestoreDone = 1,      // all records are in the database, on the disk
    RestoreDeclined = 2,  // the user keeps a database that would have to go; nothing was changed
};

// Makes a database from an image, which stays. Its name is that in the image.
//
// Each database that must go for it is asked for first: that of the path's name, "sub\Name" for "\sub\Name.CDB", and
// that of the name in the image, if it is another one. After a Yes the old one goes and the new one comes as one change
// of the store: on RestoreFailed, or if the process is killed, the old one is still there, whole. With nothing to
// replace, RestoreFailed leaves all the records that could be had.
//
// Errors: 38 the image ends too early, 31 it is damaged, or the store is, 87 its name is for no database, 112 no room,
// 8 no memory, and those of the file calls.
RestoreResult RestoreDatabase(const WCHAR* imagePath);
