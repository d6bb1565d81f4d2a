#include "set/database_image.h"

#include "set/set_entry.h"

#include "ce/file.h"
#include "ce/memory.h"
#include "ce/store.h"
#include "ce/text.h"

#include <cstring>

namespace {

constexpr DWORD WriterBytes = 16384;
constexpr DWORD RecordBufferBytes = 1024;

struct ImageWriter {
    HANDLE file;
    BYTE buffer[WriterBytes];
    DWORD filled;
    bool failed;  // the file lacks bytes of the image
};

void Flush(ImageWriter& writer)
{
    DWORD written = 0;
    if (writer.filled > 0 &&
        (!WriteFile(writer.file, writer.buffer, writer.filled, &written, nullptr) || written != writer.filled))
        writer.failed = true;
    writer.filled = 0;
}

// Writes the bytes unchanged, since both the image and the device are little-endian.
void Put(ImageWriter& writer, const void* bytes, DWORD count)
{
    if (count > WriterBytes - writer.filled)
        Flush(writer);
    if (count <= WriterBytes) {
        if (count > 0)
            std::memcpy(writer.buffer + writer.filled, bytes, count);
        writer.filled += count;
        return;
    }
    DWORD written = 0;
    if (!WriteFile(writer.file, bytes, count, &written, nullptr) || written != count)
        writer.failed = true;
}

template <class Value>
void PutValue(ImageWriter& writer, const Value& value)
{
    Put(writer, &value, sizeof value);
}

void PutText(ImageWriter& writer, const WCHAR* text)
{
    const DWORD bytes = NameBytes(text);
    PutValue(writer, bytes);
    Put(writer, text, bytes);
}

void PutHeader(ImageWriter& writer, const CEDBASEINFO& info)
{
    PutText(writer, info.szDbaseName);
    PutValue(writer, info.dwDbaseType);
    PutValue(writer, info.wNumRecords);
    PutValue(writer, info.wNumSortOrder);
    for (WORD i = 0; i < info.wNumSortOrder; i++) {
        PutValue(writer, info.rgSortSpecs[i].propid);
        PutValue(writer, info.rgSortSpecs[i].dwFlags);
    }
}

// Writes the property's id, value and flags. If an image contains no value for properties of this type, writes only the
// id and the flags.
void PutProperty(ImageWriter& writer, const CEPROPVAL& property)
{
    PutValue(writer, property.propid);
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
    case CEVT_UI2:
        PutValue(writer, property.val.uiVal);
        break;
    case CEVT_I4:
    case CEVT_UI4:
        PutValue(writer, property.val.ulVal);
        break;
    case CEVT_FILETIME:
        PutValue(writer, property.val.filetime);
        break;
    case CEVT_LPWSTR:
        PutText(writer, property.val.lpwstr);
        break;
    case CEVT_BLOB:
        PutValue(writer, property.val.blob.dwCount);
        Put(writer, property.val.blob.lpb, property.val.blob.dwCount);
        break;
    default:
        break;
    }
    PutValue(writer, property.wFlags);
}

// Writes the current record. If it can't be read, returns false and writes a record without properties in its place,
// because the image needs as many records as its header says.
bool PutCurrentRecord(ImageWriter& writer, HANDLE database)
{
    // The buffer is small at first. If a record is large, CeReadRecordProps replaces the buffer by a larger one.
    auto* buffer = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, RecordBufferBytes));
    DWORD bytes = buffer ? RecordBufferBytes : 0;
    WORD count = 0;
    const bool read = CeReadRecordProps(database, CEDB_ALLOWREALLOC, &count, nullptr, &buffer, &bytes) != 0;
    if (!read)
        count = 0;
    PutValue(writer, count);
    for (WORD i = 0; i < count; i++) {
        CEPROPVAL property;
        std::memcpy(&property, buffer + i * sizeof property, sizeof property);
        PutProperty(writer, property);
    }
    LocalFree(buffer);
    return read;
}

// Writes exactly `expected` records, beginning with the last record of the database. If the database has fewer records,
// writes a record without properties for each missing one. Returns false if the database has more or fewer records, or
// if a record can't be read.
bool PutRecords(ImageWriter& writer, HANDLE database, WORD expected)
{
    bool complete = true;
    DWORD index = 0;
    (void)CeSeekDatabase(database, CEDB_SEEK_END, 0, &index);
    while (CeSeekDatabase(database, CEDB_SEEK_CURRENT, static_cast<DWORD>(-1), &index) != 0) {
        if (expected == 0)
            return false;
        complete &= PutCurrentRecord(writer, database);
        expected--;
    }
    for (; expected > 0; expected--) {
        complete = false;
        PutValue(writer, WORD{0});
    }
    return complete;
}

// Writes the image file. Returns whether all records were read. Also returns TRUE if the image file can't be created.
// In that case `made` is unchanged.
BOOL DumpOpenDatabase(HANDLE database, const CEDBASEINFO& info, const WCHAR* name, BOOL& made)
{
    WCHAR path[MAX_PATH];
    wsprintfW(path, u"%s.CDB", name);
    ImageWriter writer;
    writer.file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (writer.file == INVALID_HANDLE_VALUE)
        return TRUE;
    made = TRUE;
    writer.filled = 0;
    writer.failed = false;
    PutHeader(writer, info);
    const bool complete = PutRecords(writer, database, info.wNumRecords);
    Flush(writer);
    const BOOL closed = CloseHandle(writer.file);  // closing writes the bytes that the file layer has buffered
    if (writer.failed || !closed)
        (void)DeleteFileW(path);
    return complete ? TRUE : FALSE;
}

}  // namespace

BOOL DumpDatabase(const WCHAR* name, BOOL* made)
{
    BOOL unused = FALSE;
    BOOL& imageMade = made ? *made : unused;
    imageMade = FALSE;
    CEOID oid = 0;
    HANDLE database = CeOpenDatabase(&oid, name, 0, 0, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return FALSE;
    CEOIDINFO info = {};
    BOOL dumped = FALSE;
    if (CeOidGetInfo(oid, &info))
        dumped = DumpOpenDatabase(database, info.infDatabase, name, imageMade);
    CloseHandle(database);
    return dumped;
}
