#include "set/image_reader.h"

#include "ce/file.h"
#include "ce/memory.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

namespace {

bool IsText(CEPROPID property)
{
    return LOWORD(property) == CEVT_LPWSTR;
}

bool HasSize(CEPROPID property)
{
    return IsText(property) || LOWORD(property) == CEVT_BLOB;
}

// Returns the size of a value in bytes if its type determines the size. Otherwise returns 0.
DWORD FixedBytes(CEPROPID property)
{
    switch (LOWORD(property)) {
    case CEVT_I2:
    case CEVT_UI2:
        return sizeof(SHORT);
    case CEVT_I4:
    case CEVT_UI4:
        return sizeof(LONG);
    case CEVT_FILETIME:
        return sizeof(FILETIME);
    default:
        return 0;
    }
}

BOOL Fail(ImageReader& reader, DWORD error)
{
    if (reader.error == 0)
        reader.error = error;
    return FALSE;
}

// Sets reader.error, if it isn't set yet, and makes the reader treat the image as ended. Called if a value can't be
// read to its end, because the position of the next value is unknown in that case.
BOOL End(ImageReader& reader)
{
    reader.next = reader.filled;
    reader.unread = 0;
    return Fail(reader, reader.readError != ERROR_SUCCESS ? reader.readError : ERROR_HANDLE_EOF);
}

// Reads a database's name and returns whether it is valid. If a NUL comes before the last character, the name ends at
// that NUL.
bool TakeName(ImageReader& reader, WCHAR (&name)[NameChars])
{
    DWORD bytes = 0;
    if (!TakeValue(reader, bytes) || bytes < sizeof(WCHAR) || bytes > sizeof name || bytes % sizeof(WCHAR) != 0 ||
        TakeBytes(reader, name, bytes) < bytes)
        return false;
    return name[bytes / sizeof(WCHAR) - 1] == 0 && name[0] != 0;
}

bool TakeSortSpecs(ImageReader& reader, ImageHeader& header)
{
    if (header.sortCount > ImageSortOrders)
        return false;
    for (WORD i = 0; i < header.sortCount; i++) {
        if (!TakeValue(reader, header.sortSpecs[i].propid) || !TakeValue(reader, header.sortSpecs[i].dwFlags))
            return false;
    }
    return true;
}

// Returns how many bytes of a value count towards MaxRecordContent, the limit for one record. The NUL of a text doesn't
// count.
DWORD ContentOf(CEPROPID property, DWORD bytes)
{
    return IsText(property) ? std::max<DWORD>(bytes, sizeof(WCHAR)) - DWORD{sizeof(WCHAR)} : bytes;
}

// Reads the value of a text or blob, which has `bytes` bytes in the file. Returns 0 or an error. After an error other
// than ERROR_HANDLE_EOF no byte of the value has been read.
DWORD TakeSizedValue(ImageReader& reader, DWORD bytes, CEPROPVAL& property)
{
    const DWORD content = ContentOf(property.propid, bytes);
    if (content > MaxRecordContent - reader.content)
        return ERROR_GEN_FAILURE;
    reader.content += content;
    const DWORD whole = IsText(property.propid) ? bytes & ~DWORD{1} : bytes;
    // The block has room for an additional NUL, since the text may lack its own.
    auto* block = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, std::size_t{whole} + sizeof(WCHAR)));
    if (!block)
        return ERROR_NOT_ENOUGH_MEMORY;
    if (TakeBytes(reader, block, whole) < whole || !SkipBytes(reader, bytes - whole)) {
        LocalFree(block);
        return ERROR_HANDLE_EOF;
    }
    std::memset(block + whole, 0, sizeof(WCHAR));
    if (IsText(property.propid))
        property.val.lpwstr = reinterpret_cast<WCHAR*>(block);
    else
        property.val.blob = {whole, block};
    return 0;
}

BOOL ReadSizedProperty(ImageReader& reader, CEPROPVAL& property)
{
    DWORD bytes = 0;
    if (!TakeValue(reader, bytes) || bytes > BytesLeft(reader))
        return End(reader);
    const DWORD error = TakeSizedValue(reader, bytes, property);
    if (error == ERROR_HANDLE_EOF)
        return End(reader);
    if (error == 0 && TakeValue(reader, property.wFlags))
        return TRUE;
    if (error == 0) {
        FreeProperty(property);
        return End(reader);
    }
    (void)Fail(reader, error);
    return SkipBytes(reader, std::uint64_t{bytes} + sizeof(WORD)) ? FALSE : End(reader);
}

}  // namespace

void StartImageReader(ImageReader& reader, HANDLE file)
{
    StartReader(reader, file);
    reader.content = 0;
    reader.error = reader.readError;
    if (SetFilePointer(file, 0, nullptr, FILE_BEGIN) != 0) {
        (void)Fail(reader, GetLastError());
        reader.unread = 0;
    }
}

BOOL ReadImageHeader(ImageReader& reader, ImageHeader& header)
{
    header = {};
    if (TakeName(reader, header.name) && TakeValue(reader, header.type) && TakeValue(reader, header.recordCount) &&
        TakeValue(reader, header.sortCount) && TakeSortSpecs(reader, header))
        return TRUE;
    return BytesLeft(reader) > 0 ? Fail(reader, ERROR_GEN_FAILURE) : End(reader);
}

BOOL ReadPropertyCount(ImageReader& reader, WORD& count)
{
    reader.content = 0;
    return TakeValue(reader, count) ? TRUE : End(reader);
}

BOOL ReadProperty(ImageReader& reader, CEPROPVAL& property)
{
    std::memset(&property, 0, sizeof property);
    if (!TakeValue(reader, property.propid))
        return End(reader);
    if (HasSize(property.propid))
        return ReadSizedProperty(reader, property);
    // All members of the union have the same address, so the bytes of the file can be read into any of them.
    const DWORD bytes = FixedBytes(property.propid);
    const bool whole = TakeBytes(reader, &property.val, bytes) == bytes && TakeValue(reader, property.wFlags);
    return whole ? TRUE : End(reader);
}

BOOL SkipProperty(ImageReader& reader)
{
    CEPROPID property = 0;
    if (!TakeValue(reader, property))
        return End(reader);
    DWORD bytes = FixedBytes(property);
    if (HasSize(property) && !TakeValue(reader, bytes))
        return End(reader);
    return SkipBytes(reader, std::uint64_t{bytes} + sizeof(WORD)) ? TRUE : End(reader);
}

void FreeProperty(const CEPROPVAL& property)
{
    if (IsText(property.propid))
        LocalFree(property.val.lpwstr);
    else if (HasSize(property.propid))
        LocalFree(property.val.blob.lpb);
}
