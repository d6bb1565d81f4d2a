// database_restore.cpp - making a database from an image; see database_image.h.

#include "set/database_image.h"
#include "set/image_reader.h"
#include "set/set_questions.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/memory.h"
#include "ce/store.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD ExtensionChars = 4;  // ".CDB"

// Databases that the user gives up for the image's: that of the path's name, and that of the image's.
struct GivenUp {
    CEOID oids[2];
    DWORD count;
};

// The path is the database's name between the root and the extension. A folder belongs to the name, so that
// "sub\Target" is never taken for "Target".
void NameOfPath(WCHAR (&name)[NameChars], const WCHAR* imagePath)
{
    CopyText(name, *imagePath == u'\\' ? imagePath + 1 : imagePath);
    const std::size_t length = wcslen(name);
    name[length - std::min<std::size_t>(length, ExtensionChars)] = 0;
}

// 0 with the last error if it can't be opened.
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
    WCHAR question[TextChars + NameChars];
    wsprintfW(question, LoadText(TextDatabaseExistsFormat, gTextA), name);
    const int answer = MessageBoxW(gMainWindow, question, LoadText(TextWarning, gTextB),
                                   MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2);
    SetWaitCursor();
    return answer == IDYES;
}

// RestoreDone if nothing of that name is in the way any more. None is asked for twice.
RestoreResult GiveUp(GivenUp& givenUp, const WCHAR* name)
{
    const CEOID oid = FindDatabase(name);
    // No database has a name that is refused.
    if (oid == 0 && GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_INVALID_PARAMETER)
        return RestoreFailed;
    if (oid == 0 || std::find(givenUp.oids, givenUp.oids + givenUp.count, oid) != givenUp.oids + givenUp.count)
        return RestoreDone;
    if (!MayReplace(name))
        return RestoreDeclined;
    givenUp.oids[givenUp.count++] = oid;
    return RestoreDone;
}

// Made anew, or the one that couldn't be deleted. The store keeps no more than its own number of sort orders.
HANDLE MakeDatabase(const ImageHeader& header)
{
    CEOID oid =
        CeCreateDatabase(header.name, header.type, std::min(header.sortCount, CEDB_MAXSORTORDER), header.sortSpecs);
    if (GetLastError() != ERROR_SUCCESS)
        oid = 0;
    return CeOpenDatabase(&oid, header.name, 0, CEDB_AUTOINCREMENT, nullptr);
}

// From here on each step gives 0, or the error of what isn't restored.

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

void StepOverProperties(ImageReader& reader, WORD count)
{
    while (count > 0 && StepOverProperty(reader))
        count--;
}

// Reads so many properties and makes a record of them, in one write: no kill leaves a part of it.
DWORD RestoreProperties(ImageReader& reader, HANDLE database, CEPROPVAL* properties, WORD count)
{
    WORD read = 0;
    while (read < count && ReadProperty(reader, properties[read]))
        read++;
    DWORD error = 0;
    if (read < count) {
        error = reader.error;
        StepOverProperties(reader, static_cast<WORD>(count - read - 1));
    } else if (CeWriteRecordProps(database, 0, count, properties) == 0) {
        error = GetLastError();
    }
    std::for_each(properties, properties + read, FreeProperty);
    return error;
}

// Of a record that has no properties nothing is made.
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
        StepOverProperties(reader, count);
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    const DWORD error = RestoreProperties(reader, database, properties, count);
    LocalFree(properties);
    return error;
}

// All of them, or all that can be: one that can't costs only itself.
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
    // What was written without an open change is on the disk only now.
    if (!CloseHandle(database) && error == 0)
        error = GetLastError();
    return error;
}

// The old ones go only together with the coming of a whole new one.
DWORD Replace(const GivenUp& givenUp, ImageReader& reader, const ImageHeader& header)
{
    if (!BeginStoreChange())
        return GetLastError();
    for (DWORD i = 0; i < givenUp.count; i++)
        (void)CeDeleteDatabase(givenUp.oids[i]);
    const DWORD error = FillDatabase(reader, header, true);
    const BOOL ended = EndStoreChange(error == 0);
    return error == 0 && !ended ? GetLastError() : error;
}

RestoreResult RestoreFrom(HANDLE image, const WCHAR* ownName)
{
    GivenUp givenUp = {};
    RestoreResult result = GiveUp(givenUp, ownName);
    if (result != RestoreDone)
        return result;
    ImageReader reader;
    ImageHeader header;
    StartImageReader(reader, image);
    if (!ReadImageHeader(reader, header)) {
        SetLastError(reader.error);
        return RestoreFailed;
    }
    result = GiveUp(givenUp, header.name);
    if (result != RestoreDone)
        return result;
    const DWORD error = givenUp.count > 0 ? Replace(givenUp, reader, header) : FillDatabase(reader, header, false);
    SetLastError(error);
    return error == 0 ? RestoreDone : RestoreFailed;
}

}  // namespace

RestoreResult RestoreDatabase(const WCHAR* imagePath)
{
    HANDLE image = CreateFileW(imagePath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (image == INVALID_HANDLE_VALUE)
        return RestoreFailed;
    WCHAR ownName[NameChars];
    NameOfPath(ownName, imagePath);
    const RestoreResult result = RestoreFrom(image, ownName);
    CloseHandle(image);
    return result;
}
