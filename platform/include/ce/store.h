// ce/store.h - the databases of the object store: records of typed properties.
//
// Each database and each record has a CEOID of its own. A CEOID is never used again. A database's name has at most 31
// characters. Each call cuts a longer name at a whole character. Names are compared without case and stored as written.
// A call with an empty name, or with a name that contains half of a surrogate pair, fails with error 87.
//
// The records of a database are in the order in which they were made. Sort orders are stored and returned, but have no
// effect. A database can't be opened in another order.
//
// A database is made or deleted as a whole, and this change is on the disk when the call returns. Changes of records
// through one handle first stay pending, so that thousands of them share one flush. The pending changes are written
// together when the handle is closed, before another handle changes something, before a database is made or deleted,
// and before the registry is used. They are also written before a further change if 4096 changes or 8 MiB are pending,
// or if the first of them is half a second old. A process that is killed loses at most the pending changes, and never a
// part of a record. The database can be opened afterwards. If the disk has no space for all pending changes, as many as
// fit are written, in their order. If changes are lost, CloseHandle fails with error 112, 31 or 8.
//
// CloseHandle closes a handle. The calls below fail with error 87 for a handle that is not open. Where a comment below
// refers to the top of this file, the reason for the error is:
//   8    memory ran out
//   31   no device is open, the host's disk failed, or a record is damaged
//   112  the disk is full
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/memory.h"
#include "ce/types.h"

using CEOID = DWORD;
using CEPROPID = DWORD;  // the property's number in the high half, its type (CEVT_*) in the low one

inline constexpr DWORD CEDB_AUTOINCREMENT = 1;  // a flag of CeOpenDatabase
inline constexpr DWORD CEDB_ALLOWREALLOC = 1;   // a flag of CeReadRecordProps

inline constexpr DWORD CEDB_SEEK_CEOID = 1;
inline constexpr DWORD CEDB_SEEK_BEGINNING = 2;
inline constexpr DWORD CEDB_SEEK_END = 4;
inline constexpr DWORD CEDB_SEEK_CURRENT = 8;

inline constexpr DWORD CEDB_SORT_DESCENDING = 1;
inline constexpr DWORD CEDB_SORT_CASEINSENSITIVE = 2;
inline constexpr DWORD CEDB_SORT_UNKNOWNFIRST = 4;

// CEPROPVAL.wFlags. All bits except these two can be used by the caller and are stored.
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
inline constexpr DWORD CEDB_MAXRECORDS = 0xFFFF;  // the largest wNumRecords

// The largest total size of the texts and blobs of one record, in bytes without the NULs of the texts. It is a hundred
// times as large as on a real device. It limits the memory that a record of a damaged or hostile set can take.
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
    DWORD dwSize;             // bytes of all records in the store
    FILETIME ftLastModified;  // UTC: when the latest group of pending changes began; at first the creation
    SORTORDERSPEC rgSortSpecs[CEDB_MAXSORTORDER];
};

struct CERECORDINFO {
    CEOID oidParent;  // its database
};

// Describes a database or a record. wObjType says which of the two members is valid.
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

// One property. For a type that is none of CEVT_..., the bits of `val` are stored unchanged.
struct CEPROPVAL {
    CEPROPID propid;
    WORD wLenData;  // not used
    WORD wFlags;
    CEVALUNION val;
};

// Begins an enumeration of the databases of a type (0 for all types). The oldest database comes first. The call
// succeeds even if the store has no database. Returns INVALID_HANDLE_VALUE on failure. The last error is 31 or 8 for
// the reasons at the top of this file.
HANDLE CeFindFirstDatabase(DWORD type);

// Returns the next database of the enumeration. At the end, returns 0 and sets error 259. Also returns 0 on failure.
// The last error of a failure is 1018 if a database was deleted since the enumeration began, or 87, 31 or 8 for the
// reasons at the top of this file.
CEOID CeFindNextDatabase(HANDLE enumeration);

// Returns nonzero on success. Fails with error 6 if there is no object with this oid, with error 87 if `info` is null,
// and with errors 31 and 8 for the reasons at the top of this file. After a failure `*info` is unchanged.
BOOL CeOidGetInfo(CEOID oid, CEOIDINFO* info);

// Makes a database with at most CEDB_MAXSORTORDER sort orders. If `sortOrders` is 0, the database gets one sort order,
// with the property 0. Sets the last error to 0 on success. Returns 0 on failure. The last error is 52 if the name
// exists, 87 if the name or the sort orders are invalid, or 112, 31 or 8 for the reasons at the top of this file.
CEOID CeCreateDatabase(const WCHAR* name, DWORD type, WORD sortOrders, const SORTORDERSPEC* specs);

// Deletes a database. Returns nonzero when the database and its records are gone from the disk. Fails with error 32
// while a handle on the database is open, with error 87 if there is no such database, and with errors 112, 31 and 8 for
// the reasons at the top of this file.
BOOL CeDeleteDatabase(CEOID oid);

// Opens a database. If `*oid` is 0, the database is found by its name, and `*oid` is set. Otherwise it is found by
// `*oid`. The handle has a record pointer, which is at the first record. With CEDB_AUTOINCREMENT each read advances it,
// otherwise it stays. `sortProperty` must be 0; `notified` is not used, because there are no notifications of changes.
// Returns INVALID_HANDLE_VALUE on failure. The last error is:
//   2   there is no such database
//   87  `flags` has other bits, `sortProperty` isn't 0, `oid` is null, or `*oid` is 0 and the name is invalid
//   31  a reason at the top of this file; or the stored name is damaged, so that a search for the name can't find the
//       database
//   8   memory ran out
HANDLE CeOpenDatabase(CEOID* oid, const WCHAR* name, CEPROPID sortProperty, DWORD flags, HWND notified);

// Moves the handle's record pointer and returns the record at the new position. `*index` is set to the new position,
// counted from 0. `index` may be null.
//   CEDB_SEEK_CEOID      to the record whose oid is `value`
//   CEDB_SEEK_BEGINNING  `value` records after the first
//   CEDB_SEEK_END        `value` records before the end: 0 is the position after the last record, 1 the last record
//   CEDB_SEEK_CURRENT    `value` records after the present position; `value` is read as a signed number
// The cost of a step doesn't depend on the position. The cost of a longer move grows with its distance. The first call
// after a deletion takes longer, because it also counts the records before the new position.
// Returns 0 if there is no record at the new position, or on failure. The last error is:
//   0   CEDB_SEEK_END with 0 has moved the pointer after the last record
//   25  the position is beyond an end: the pointer moves after the last record, or stays if the move was towards the
//       beginning
//   31  CEDB_SEEK_END with 0 has moved the pointer after the last record, but the number of records differs from the
//       count that is stored in the database; or a reason at the top of this file
//   87  `how` is invalid, the handle isn't open, or the oid is no record of the database
//   8   memory ran out
CEOID CeSeekDatabase(HANDLE database, DWORD how, DWORD value, DWORD* index);

// Reads the record at the record pointer. With a null `ids` it reads all properties, in the order in which they were
// first written, and sets `*count` to their number. Otherwise it reads the `*count` properties of `ids`, in this order.
// A missing property is returned with its id and CEDB_PROPNOTFOUND. If all are missing, the call fails with error 232.
// The block `*buffer` of `*bytes` bytes gets the CEPROPVALs first, then their texts and blobs. With CEDB_ALLOWREALLOC a
// block that is null or too small is replaced by one of LocalAlloc, which the caller frees with LocalFree.
// Returns the record's oid. On failure returns 0, and the record pointer doesn't move. The last error is:
//   259    no record is left at the record pointer or after it
//   31     no record is left, but the number of records differs from the count that is stored in the database; or
//          another cause of error 31
//   1018   the record was deleted, and another one follows (with CEDB_AUTOINCREMENT that one is read instead)
//   232    all properties of `ids` are missing
//   122    the block is null or too small, and CEDB_ALLOWREALLOC isn't set
//   87     the handle isn't open, a pointer other than `ids` is null, or `flags` has other bits
//   8      memory ran out
CEOID CeReadRecordProps(HANDLE database, DWORD flags, WORD* count, const CEPROPID* ids, BYTE** buffer, DWORD* bytes);

// Writes properties into a record. With oid 0 it makes a new record after all others. The handle's record pointer
// doesn't move. If the record has a property with the same id, the new property replaces it. A property with
// CEDB_PROPDELETE is removed from the record. All other properties of the record stay. CEDB_PROPNOTFOUND, which a read
// can have set, isn't stored. Returns the record's oid. On failure returns 0, and nothing is changed. The last error
// is:
//   87     the handle isn't open, there are no properties, a text or a nonempty blob is null, the record would get more
//          than 65535 properties or its texts and blobs would exceed MaxRecordContent, or the database has no record
//          with this oid
//   112    the disk is full, or the database has CEDB_MAXRECORDS records already
//   8, 31  for the reasons at the top of this file
CEOID CeWriteRecordProps(HANDLE database, CEOID oid, WORD count, const CEPROPVAL* properties);

// Deletes a record. Nonzero on success. If the record pointer was at this record, a later CEDB_SEEK_CURRENT counts from
// the next record, and a later read fails with error 1018 or reads the next record (see CeReadRecordProps). Fails with
// error 87 if the database has no such record, and with errors 112, 31 and 8 for the reasons at the top of this file.
BOOL CeDeleteRecord(HANDLE database, CEOID oid);

// Begins or ends a transaction. A real device doesn't have these calls. All changes of databases and records between
// the two calls, through any handle, are on the disk when EndStoreChange(TRUE) has succeeded. If the transaction ends
// with EndStoreChange(FALSE), if the process is killed first, or if a failure occurs, such as a full disk, everything
// is as it was before the transaction. Handles that were opened in between can be used after a success, and must be
// closed before EndStoreChange(FALSE). Nothing else of the device may be changed in between. Both calls return nonzero
// on success. BeginStoreChange fails with error 87 if a transaction is open already, and EndStoreChange fails with
// error 87 if none is open. BeginStoreChange and EndStoreChange(TRUE) can also fail with errors 112, 8 and 31 for the
// reasons at the top of this file. EndStoreChange(FALSE) can also fail with error 31 if no device is open, but in no
// other way.
BOOL BeginStoreChange();
BOOL EndStoreChange(BOOL kept);
