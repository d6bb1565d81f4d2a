// database_restore.cpp - making a database from an image; see database_image.h.

#include "database_image.h"
#include "image_reader.h"
#include "set_questions.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/memory.h"
#include "ce/store.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr UINT ReplaceDatabaseText = 135;
constexpr UINT WarningText = 142;
constexpr DWORD ExtensionChars = 4;  // ".CDB"

// Databases that the user gives up for the image's: that of the path's name, and that of the image's.
struct GivenUp {
    CEOID oids[2];
    DWORD count;
};

void NameOfPath(WCHAR (&name)[NameChars], const WCHAR* imagePath)
{
    CopyText(name, imagePath);
    const std::size_t length = wcslen(name);
    name[length - std::min<std::size_t>(length, ExtensionChars)] = 0;
    const WCHAR* start = name;
    for (const WCHAR* at = name; *at; at++) {
        if (*at == u'\\')
            start = at + 1;
    }
    std::memmove(name, start, NameBytes(start));
}

// 0 if there is none of that name.
CEOID FindDatabase(const WCHAR* name)
{
    CEOID oid = 0;
    HANDLE database = CeOpenDatabase(&oid, name, 0, CEDB_AUTOINCREMENT, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return 0;
    CloseHandle(database);
    return oid;
}

// Whether a database can have that name.
bool Serves(const WCHAR* name)
{
    return FindDatabase(name) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool MayReplace(const WCHAR* name)
{
    SetCursor(nullptr);
    WCHAR question[TextChars + NameChars];
    wsprintfW(question, LoadText(ReplaceDatabaseText, gTextA), name);
    const int answer = MessageBoxW(gMainWindow, question, LoadText(WarningText, gTextB),
                                   MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2);
    SetWaitCursor();
    return answer == IDYES;
}

// False if there is a database of that name and the user keeps it. None is asked for twice.
bool GiveUp(GivenUp& givenUp, const WCHAR* name)
{
    const CEOID oid = FindDatabase(name);
    if (oid == 0 || std::find(givenUp.oids, givenUp.oids + givenUp.count, oid) != givenUp.oids + givenUp.count)
        return true;
    if (!MayReplace(name))
        return false;
    givenUp.oids[givenUp.count++] = oid;
    return true;
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

void EmptyDatabase(HANDLE database)
{
    for (;;) {
        WORD count = 1;
        BYTE* buffer = nullptr;
        DWORD bytes = 0;
        const CEOID oid = CeReadRecordProps(database, CEDB_ALLOWREALLOC, &count, nullptr, &buffer, &bytes);
        if (oid != 0)
            (void)CeDeleteRecord(database, oid);
        LocalFree(buffer);
        if (oid == 0)
            return;
    }
}

// Reads so many properties and makes a record of them, in one write: no kill leaves a part of it. False if the image
// ends within them or they couldn't be written.
bool RestoreProperties(ImageReader& reader, HANDLE database, CEPROPVAL* properties, WORD count)
{
    WORD read = 0;
    while (read < count && ReadProperty(reader, properties[read]))
        read++;
    const bool written = read == count && CeWriteRecordProps(database, 0, count, properties) != 0;
    std::for_each(properties, properties + read, FreeProperty);
    return written;
}

// False if the record isn't there. Of one that has no properties nothing is made.
bool RestoreRecord(ImageReader& reader, HANDLE database)
{
    WORD count = 0;
    if (!ReadPropertyCount(reader, count))
        return false;
    if (count == 0)
        return true;
    if (count <= ImageProperties) {
        CEPROPVAL properties[ImageProperties];
        return RestoreProperties(reader, database, properties, count);
    }
    auto* properties = static_cast<CEPROPVAL*>(LocalAlloc(LMEM_FIXED, count * sizeof(CEPROPVAL)));
    if (!properties) {
        while (count > 0 && StepOverProperty(reader))
            count--;
        return false;
    }
    const bool restored = RestoreProperties(reader, database, properties, count);
    LocalFree(properties);
    return restored;
}

// One record that can't be written costs only itself; the end of the image gives none any more.
bool RestoreRecords(ImageReader& reader, HANDLE database, WORD records)
{
    bool all = true;
    for (; records > 0; records--)
        all &= RestoreRecord(reader, database);
    return all;
}

BOOL FillDatabase(ImageReader& reader, const ImageHeader& header)
{
    HANDLE database = MakeDatabase(header);
    if (database == INVALID_HANDLE_VALUE)
        return FALSE;
    EmptyDatabase(database);
    const bool restored = RestoreRecords(reader, database, header.recordCount);
    // What was written is on the disk only now.
    return CloseHandle(database) && restored ? TRUE : FALSE;
}

BOOL RestoreFrom(HANDLE image, const WCHAR* bareName)
{
    GivenUp givenUp = {};
    if (!GiveUp(givenUp, bareName))
        return FALSE;
    ImageReader reader;
    ImageHeader header;
    StartImageReader(reader, image);
    if (!ReadImageHeader(reader, header) || !GiveUp(givenUp, header.name))
        return FALSE;
    if (givenUp.count > 0) {
        if (!Serves(header.name) || !StepOverRecords(reader, header.recordCount))
            return FALSE;
        StartImageReader(reader, image);
        if (!ReadImageHeader(reader, header))
            return FALSE;
    }
    for (DWORD i = 0; i < givenUp.count; i++)
        (void)CeDeleteDatabase(givenUp.oids[i]);
    return FillDatabase(reader, header);
}

}  // namespace

BOOL RestoreDatabase(const WCHAR* imagePath)
{
    HANDLE image = CreateFileW(imagePath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (image == INVALID_HANDLE_VALUE)
        return FALSE;
    WCHAR bareName[NameChars];
    NameOfPath(bareName, imagePath);
    const BOOL restored = RestoreFrom(image, bareName);
    CloseHandle(image);
    return restored;
}
