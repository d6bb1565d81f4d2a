// A restore first determines which databases it replaces. Then it reads the records of the image and writes them into
// the store.
//
// If a restore replaces databases, one transaction of the store contains both the deletion of the old databases and all
// records of the new database. If a record can't be restored, this transaction is undone. If a restore replaces no
// database, nothing is undone, and the new database lacks only the records that can't be restored.
//
// After a damaged record the reader continues if it knows the length of the record. Otherwise that record is the last
// one that it reads.
#include "set/database_image.h"
#include "set/image_reader.h"
#include "set/set_questions.h"

#include "ce/file.h"
#include "ce/memory.h"
#include "ce/store.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD ExtensionChars = 4;  // ".CDB"

// The databases that the user has agreed to replace, at most two: one whose name is derived from the path of the image
// file (NameOfPath), and one whose name is stored in the image.
struct ReplacedDatabases {
    CEOID oids[2];
    DWORD count;
};

// Writes the database's name, which is the path without the leading backslash and the extension. The name includes the
// folders, so "sub\Target" is a different database from "Target".
void NameOfPath(WCHAR (&name)[NameChars], const WCHAR* imagePath)
{
    CopyText(name, *imagePath == u'\\' ? imagePath + 1 : imagePath);
    const std::size_t length = wcslen(name);
    name[length - std::min<std::size_t>(length, ExtensionChars)] = 0;
}

// Returns the oid of the database. If the database can't be opened, returns 0 and sets the last error.
CEOID FindDatabase(const WCHAR* name)
{
    CEOID oid = 0;
    HANDLE database = CeOpenDatabase(&oid, name, 0, CEDB_AUTOINCREMENT, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return 0;
    CloseHandle(database);
    return oid;
}

bool MayReplace(const WCHAR* name)
{
    SetCursor(nullptr);
    const bool may = gRunQuestions.mayReplaceDatabase(name);
    SetWaitCursor();
    return may;
}

// If a database of this name exists and isn't in `replaced`, asks the user whether it may be replaced. Returns
// RestoreDone if it may be replaced or doesn't exist, RestoreDeclined if it may not be replaced, and RestoreFailed if
// the store can't open it.
RestoreResult AskToReplace(ReplacedDatabases& replaced, const WCHAR* name)
{
    const CEOID oid = FindDatabase(name);
    // No database can have an invalid name, and the store refuses such a name by ERROR_INVALID_PARAMETER. So this error
    // also means that there is no such database.
    if (oid == 0 && GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_INVALID_PARAMETER)
        return RestoreFailed;
    if (oid == 0 || std::find(replaced.oids, replaced.oids + replaced.count, oid) != replaced.oids + replaced.count)
        return RestoreDone;
    if (!MayReplace(name))
        return RestoreDeclined;
    replaced.oids[replaced.count++] = oid;
    return RestoreDone;
}

// Creates a database and opens it. If an old database of this name couldn't be deleted, opens the old database. The new
// database gets at most CEDB_MAXSORTORDER sort orders, because the store accepts no more.
HANDLE MakeDatabase(const ImageHeader& header)
{
    CEOID oid =
        CeCreateDatabase(header.name, header.type, std::min(header.sortCount, CEDB_MAXSORTORDER), header.sortSpecs);
    if (GetLastError() != ERROR_SUCCESS)
        oid = 0;
    return CeOpenDatabase(&oid, header.name, 0, CEDB_AUTOINCREMENT, nullptr);
}

// Each of the following functions with a DWORD result returns 0 for success. Otherwise it returns the error of the
// first part that couldn't be restored.

DWORD EmptyDatabase(HANDLE database)
{
    for (;;) {
        WORD count = 1;
        BYTE* buffer = nullptr;
        DWORD bytes = 0;
        const CEOID oid = CeReadRecordProps(database, CEDB_ALLOWREALLOC, &count, nullptr, &buffer, &bytes);
        LocalFree(buffer);
        if (oid == 0)
            return GetLastError() == ERROR_NO_MORE_ITEMS ? 0 : GetLastError();
        if (!CeDeleteRecord(database, oid))
            return GetLastError();
    }
}

void SkipProperties(ImageReader& reader, WORD count)
{
    while (count > 0 && SkipProperty(reader))
        count--;
}

// Reads `count` properties and writes them as one record in one call. So the database has no incomplete record, even if
// the process is killed.
DWORD RestoreProperties(ImageReader& reader, HANDLE database, CEPROPVAL* properties, WORD count)
{
    WORD read = 0;
    while (read < count && ReadProperty(reader, properties[read]))
        read++;
    DWORD error = 0;
    if (read < count) {
        error = reader.error;
        SkipProperties(reader, static_cast<WORD>(count - read - 1));
    } else if (CeWriteRecordProps(database, 0, count, properties) == 0) {
        error = GetLastError();
    }
    std::for_each(properties, properties + read, FreeProperty);
    return error;
}

// Reads a record and writes it to the database. A record without properties isn't written.
DWORD RestoreRecord(ImageReader& reader, HANDLE database)
{
    WORD count = 0;
    if (!ReadPropertyCount(reader, count))
        return reader.error;
    if (count == 0)
        return 0;
    if (count <= ImageProperties) {
        CEPROPVAL properties[ImageProperties];
        return RestoreProperties(reader, database, properties, count);
    }
    auto* properties = static_cast<CEPROPVAL*>(LocalAlloc(LMEM_FIXED, count * sizeof(CEPROPVAL)));
    if (!properties) {
        SkipProperties(reader, count);
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    const DWORD error = RestoreProperties(reader, database, properties, count);
    LocalFree(properties);
    return error;
}

// Restores the records of the image. After a record that can't be restored, it stops if `allOrNone` is true, and
// otherwise continues with the next record. Returns the first error.
DWORD RestoreRecords(ImageReader& reader, HANDLE database, WORD records, bool allOrNone)
{
    DWORD first = 0;
    for (; records > 0 && (first == 0 || !allOrNone); records--) {
        const DWORD error = RestoreRecord(reader, database);
        if (first == 0)
            first = error;
    }
    return first;
}

DWORD FillDatabase(ImageReader& reader, const ImageHeader& header, bool allOrNone)
{
    HANDLE database = MakeDatabase(header);
    if (database == INVALID_HANDLE_VALUE)
        return GetLastError();
    DWORD error = EmptyDatabase(database);
    if (error == 0)
        error = RestoreRecords(reader, database, header.recordCount, allOrNone);
    // If no transaction of the store is open, closing the database writes the records to the disk.
    if (!CloseHandle(database) && error == 0)
        error = GetLastError();
    return error;
}

// Deletes the old databases and fills the new one in one transaction of the store.
DWORD Replace(const ReplacedDatabases& replaced, ImageReader& reader, const ImageHeader& header)
{
    if (!BeginStoreChange())
        return GetLastError();
    for (DWORD i = 0; i < replaced.count; i++)
        (void)CeDeleteDatabase(replaced.oids[i]);
    const DWORD error = FillDatabase(reader, header, true);
    const BOOL ended = EndStoreChange(error == 0);
    return error == 0 && !ended ? GetLastError() : error;
}

RestoreResult RestoreFrom(HANDLE image, const WCHAR* pathName)
{
    ReplacedDatabases replaced = {};
    RestoreResult result = AskToReplace(replaced, pathName);
    if (result != RestoreDone)
        return result;
    ImageReader reader;
    ImageHeader header;
    StartImageReader(reader, image);
    if (!ReadImageHeader(reader, header)) {
        SetLastError(reader.error);
        return RestoreFailed;
    }
    result = AskToReplace(replaced, header.name);
    if (result != RestoreDone)
        return result;
    const DWORD error = replaced.count > 0 ? Replace(replaced, reader, header) : FillDatabase(reader, header, false);
    SetLastError(error);
    return error == 0 ? RestoreDone : RestoreFailed;
}

}  // namespace

RestoreResult RestoreDatabase(const WCHAR* imagePath)
{
    HANDLE image = CreateFileW(imagePath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (image == INVALID_HANDLE_VALUE)
        return RestoreFailed;
    WCHAR pathName[NameChars];
    NameOfPath(pathName, imagePath);
    const RestoreResult result = RestoreFrom(image, pathName);
    CloseHandle(image);
    return result;
}
