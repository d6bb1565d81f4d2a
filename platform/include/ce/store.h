// ce/store.h - the databases of the object store: records of typed properties.
//
// Databases and records have one space of CEOIDs, and none serves twice. A database's name has at most 31
// characters; a longer one is cut at a whole character, wherever it is given. Names are compared without
// case and kept as written; an empty one, or one with half of a surrogate pair, fails with 87.
//
// The records of a database stand in the order in which they were made. Sort orders are kept and given back,
// but order nothing: a database is opened in that one order.
//
// What is on the disk when: a database is made or deleted as a whole, and it is on the disk when the call
// returns. Changes of records through one handle are gathered, so that thousands share one flush. They go to
// the disk together when the handle is closed; before any other handle changes something, a database is made
// or deleted, or the registry is used; and before a further change once there are 4096 of them, 8 MiB, or the
// first is half a second old. A process that is killed loses at most the changes gathered last, whole records
// as they were written; never half of one, and the database opens as before. If the disk has no room for all of
// them, those for which it has some are put on it, in their order. What is lost makes CloseHandle fail with 112 or 31.
//
// A handle goes back with CloseHandle. One that is not open fails with 87, a call without an open device with
// 31, as does anything that the host's disk refuses or a record that is damaged.
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/memory.h"
#include "ce/types.h"

using CEOID = DWORD;
using CEPROPID = DWORD;  // the property's number in the high half, its type (CEVT_*) in the low one

inline constexpr DWORD CEDB_AUTOINCREMENT = 1;  // CeOpenDatabase
inline constexpr DWORD CEDB_ALLOWREALLOC = 1;   // CeReadRecordProps

inline constexpr DWORD CEDB_SEEK_CEOID = 1;
inline constexpr DWORD CEDB_SEEK_BEGINNING = 2;
inline constexpr DWORD CEDB_SEEK_END = 4;
inline constexpr DWORD CEDB_SEEK_CURRENT = 8;

inline constexpr DWORD CEDB_SORT_DESCENDING = 1;
inline constexpr DWORD CEDB_SORT_CASEINSENSITIVE = 2;
inline constexpr DWORD CEDB_SORT_UNKNOWNFIRST = 4;

// CEPROPVAL.wFlags. All other bits are the caller's, and kept.
inline constexpr WORD CEDB_PROPNOTFOUND = 0x100;
inline constexpr WORD CEDB_PROPDELETE = 0x200;

inline constexpr WORD CEVT_I2 = 2;
inline constexpr WORD CEVT_I4 = 3;
inline constexpr WORD CEVT_R8 = 5;
inline constexpr WORD CEVT_BOOL = 11;
inline constexpr WORD CEVT_UI2 = 18;
inline constexpr WORD CEVT_UI4 = 19;
inline constexpr WORD CEVT_LPWSTR = 31;
inline constexpr WORD CEVT_FILETIME = 64;
inline constexpr WORD CEVT_BLOB = 65;

inline constexpr WORD OBJTYPE_INVALID = 0;
inline constexpr WORD OBJTYPE_FILE = 1;
inline constexpr WORD OBJTYPE_DIRECTORY = 2;
inline constexpr WORD OBJTYPE_DATABASE = 3;
inline constexpr WORD OBJTYPE_RECORD = 4;

inline constexpr DWORD CEDB_MAXDBASENAMELEN = 32;  // characters with the NUL
inline constexpr WORD CEDB_MAXSORTORDER = 4;
inline constexpr DWORD CEDB_MAXRECORDS = 0xFFFF;  // wNumRecords counts no further

// Bytes that the texts, without their NULs, and the blobs of one record may have together. A device's own store holds a
// hundredth of that in a record. It bounds the memory that a record from anywhere can ask for.
inline constexpr DWORD MaxRecordContent = 16 * 1024 * 1024;

// CEDBASEINFO.dwFlags: which fields are filled.
inline constexpr DWORD CEDB_VALIDNAME = 1;
inline constexpr DWORD CEDB_VALIDTYPE = 2;
inline constexpr DWORD CEDB_VALIDSORTSPEC = 4;
inline constexpr DWORD CEDB_VALIDMODTIME = 8;

struct SORTORDERSPEC {
    CEPROPID propid;
    DWORD dwFlags;
};

struct CEDBASEINFO {
    DWORD dwFlags;
    WCHAR szDbaseName[CEDB_MAXDBASENAMELEN];
    DWORD dwDbaseType;
    WORD wNumRecords;
    WORD wNumSortOrder;
    DWORD dwSize;             // bytes that the records take in the store
    FILETIME ftLastModified;  // UTC, of the first change that was gathered last
    SORTORDERSPEC rgSortSpecs[CEDB_MAXSORTORDER];
};

struct CERECORDINFO {
    CEOID oidParent;  // its database
};

// What an object is; wObjType tells which member holds.
struct CEOIDINFO {
    WORD wObjType;
    WORD wPad;
    union {
        CEDBASEINFO infDatabase;
        CERECORDINFO infRecord;
    };
};

struct CEBLOB {
    DWORD dwCount;
    BYTE* lpb;
};

union CEVALUNION {
    SHORT iVal;
    USHORT uiVal;
    LONG lVal;
    ULONG ulVal;
    FILETIME filetime;
    WCHAR* lpwstr;
    CEBLOB blob;
    BOOL boolVal;
    double dblVal;
};

// One property. Of a type that isn't named above, the bits of `val` are kept as they stand.
struct CEPROPVAL {
    CEPROPID propid;
    WORD wLenData;  // not used
    WORD wFlags;
    CEVALUNION val;
};

// Begins a walk over the databases of a type, 0 for all, oldest first. An empty store gives a handle too.
// INVALID_HANDLE_VALUE on failure: 31.
HANDLE CeFindFirstDatabase(DWORD type);

// The next one. 0 with 259 at the end, 1018 if a database was deleted since the walk began, 87, 31.
CEOID CeFindNextDatabase(HANDLE enumeration);

// Nonzero on success. 6 no such object, 87 no `info`, 31; `info` is left alone then.
BOOL CeOidGetInfo(CEOID oid, CEOIDINFO* info);

// Makes a database with at most CEDB_MAXSORTORDER sort orders; none asked gives one with the property 0.
// Sets the last error to 0 on success. 0 on failure: 52 the name exists, 87, 112, 31.
CEOID CeCreateDatabase(const WCHAR* name, DWORD type, WORD sortOrders, const SORTORDERSPEC* specs);

// Nonzero when the database and its records are gone from the disk. 32 while a handle on it is open, 87 no
// such database, 112, 31.
BOOL CeDeleteDatabase(CEOID oid);

// Opens a database, by name if `*oid` is 0 (which is set then), otherwise by oid. The handle's pointer stands
// at the first record. With CEDB_AUTOINCREMENT each read moves it on; without, it stays. `sortProperty` must
// be 0; `notified` is not used, since nobody is told of changes.
// INVALID_HANDLE_VALUE on failure: 2 no such database, 87 other flags or a sort property, 31, also for one that only
// the walk finds, since it is stored under another name than its own.
HANDLE CeOpenDatabase(CEOID* oid, const WCHAR* name, CEPROPID sortProperty, DWORD flags, HWND notified);

// Moves the pointer; the result is the record that it stands at, and `*index`, which may be null, its position
// from 0.
//   CEDB_SEEK_CEOID      to the record of that oid
//   CEDB_SEEK_BEGINNING  `value` records on from the first
//   CEDB_SEEK_END        `value` records back from behind the last: 0 is behind the last, 1 the last
//   CEDB_SEEK_CURRENT    `value`, as a signed number, records on from where it stands
// A step costs the same wherever the pointer stands; a far jump costs by its distance, and a position is
// counted anew after a deletion.
// 0 if no record is there: with 0 behind the last, where END 0 leads (with 31 if the database counts more or fewer
// records than there are; it stands there all the same). With 25 past an end: towards the end it
// stands behind the last, towards the beginning it stays. 87 another way, a handle that isn't open, an oid
// that is no record of the database. 31.
CEOID CeSeekDatabase(HANDLE database, DWORD how, DWORD value, DWORD* index);

// Reads the record at the pointer. `ids` null: all its properties, in the order in which they were first
// written, and `*count` tells how many. Otherwise the `*count` asked ones, in their order; one that is missing
// comes with its id and CEDB_PROPNOTFOUND, and if all are, the call fails with 232.
// The block `*buffer` of `*bytes` bytes gets the CEPROPVALs first, then their texts and blobs. With
// CEDB_ALLOWREALLOC a block that is null or too small is replaced by one of LocalAlloc; free with LocalFree.
// Returns the record's oid. 0 on failure, and the pointer stays: 259 behind the last, 1018 the record was
// deleted (with CEDB_AUTOINCREMENT the following one is read instead), 232, 122 too small, 8, 87, 31. Behind the last
// it is 31 if the database counts more or fewer records than there are.
CEOID CeReadRecordProps(HANDLE database, DWORD flags, WORD* count, const CEPROPID* ids, BYTE** buffer, DWORD* bytes);

// Writes properties into a record; with oid 0 into a new one, behind all others, which leaves the pointer
// where it is. A property whose id is there already is replaced, one with CEDB_PROPDELETE is taken away; the
// others stay. CEDB_PROPNOTFOUND, which a read may have left there, isn't stored. 0 on failure, and nothing is
// changed: 87 no properties, a null text or blob, more than MaxRecordContent, no such record; 112 no room, or a record
// beyond CEDB_MAXRECORDS; 8, 31.
CEOID CeWriteRecordProps(HANDLE database, CEOID oid, WORD count, const CEPROPVAL* properties);

// Nonzero on success. If the pointer stood there, it stands at the following record from then on.
// 87 no such record in this database, 112, 31.
BOOL CeDeleteRecord(HANDLE database, CEOID oid);

// No calls of a device's own store: the changes between them are one. Databases that are made or deleted and records
// that are changed, through any handle, are on the disk when EndStoreChange(TRUE) has succeeded. Before, a kill leaves
// all as it was; so does EndStoreChange(FALSE), and a failure, a full disk among them. What was opened meanwhile is
// closed before the end, and nothing else of the device is changed.
// Nonzero on success, for EndStoreChange(FALSE) always when a change is open. 87 one is open already, or none is; 112,
// 8, 31.
BOOL BeginStoreChange();
BOOL EndStoreChange(BOOL kept);
