// image_reader.cpp - see image_reader.h.

#include "image_reader.h"

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

// Bytes of a value that has no size of its own.
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

std::uint64_t BytesLeft(const ImageReader& reader)
{
    return reader.filled - reader.next + reader.unread;
}

// Fills the buffer anew once all of it is taken.
void Refill(ImageReader& reader)
{
    reader.next = 0;
    reader.filled = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::uint64_t>(ImageBufferBytes, reader.unread));
    if (wanted == 0)
        return;
    const BOOL read = ReadFile(reader.file, reader.buffer, wanted, &reader.filled, nullptr);
    // What can't be read, and a file that has shrunk since it was measured, end here.
    reader.unread = !read || reader.filled < wanted ? 0 : reader.unread - reader.filled;
}

// Takes `bytes` bytes, or as many as the file has; `target` null steps over them. Returns whether it had them all.
bool Take(ImageReader& reader, void* target, std::uint64_t bytes)
{
    auto* out = static_cast<BYTE*>(target);
    while (bytes > 0) {
        if (reader.next == reader.filled)
            Refill(reader);
        const auto piece = static_cast<DWORD>(std::min<std::uint64_t>(bytes, reader.filled - reader.next));
        if (piece == 0)
            return false;
        if (out) {
            std::memcpy(out, reader.buffer + reader.next, piece);
            out += piece;
        }
        reader.next += piece;
        bytes -= piece;
    }
    return true;
}

void EndReading(ImageReader& reader)
{
    reader.next = reader.filled;
    reader.unread = 0;
}

template <class Value>
bool TakeValue(ImageReader& reader, Value& value)
{
    return Take(reader, &value, sizeof value);
}

// A name that ends before its last character is its first part.
bool TakeName(ImageReader& reader, WCHAR (&name)[NameChars])
{
    DWORD bytes = 0;
    if (!TakeValue(reader, bytes) || bytes < sizeof(WCHAR) || bytes > sizeof name || bytes % sizeof(WCHAR) != 0 ||
        !Take(reader, name, bytes))
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

// The value of a text or blob: its size is in the file already.
bool TakeSizedValue(ImageReader& reader, CEPROPVAL& property)
{
    DWORD bytes = 0;
    if (!TakeValue(reader, bytes) || bytes > BytesLeft(reader))
        return false;
    const DWORD whole = IsText(property.propid) ? bytes & ~DWORD{1} : bytes;
    // Room for a NUL, whether or not the text brings its own.
    auto* block = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, std::size_t{whole} + sizeof(WCHAR)));
    if (!block)
        return false;
    if (!Take(reader, block, whole) || !Take(reader, nullptr, bytes - whole)) {
        LocalFree(block);
        return false;
    }
    std::memset(block + whole, 0, sizeof(WCHAR));
    if (IsText(property.propid))
        property.val.lpwstr = reinterpret_cast<WCHAR*>(block);
    else
        property.val.blob = {whole, block};
    return true;
}

}  // namespace

void StartImageReader(ImageReader& reader, HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    reader.file = file;
    reader.filled = 0;
    reader.next = 0;
    reader.unread = 0;
    if (GetFileInformationByHandle(file, &information) && SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0)
        reader.unread = (std::uint64_t{information.nFileSizeHigh} << 32) | information.nFileSizeLow;
}

BOOL ReadImageHeader(ImageReader& reader, ImageHeader& header)
{
    header = {};
    const bool whole = TakeName(reader, header.name) && TakeValue(reader, header.type) &&
                       TakeValue(reader, header.recordCount) && TakeValue(reader, header.sortCount) &&
                       TakeSortSpecs(reader, header);
    return whole ? TRUE : FALSE;
}

BOOL ReadPropertyCount(ImageReader& reader, WORD& count)
{
    return TakeValue(reader, count) ? TRUE : FALSE;
}

BOOL ReadProperty(ImageReader& reader, CEPROPVAL& property)
{
    std::memset(&property, 0, sizeof property);
    // Every member of the union begins where it does, with the bytes of the file.
    const bool value = TakeValue(reader, property.propid) &&
                       (HasSize(property.propid) ? TakeSizedValue(reader, property)
                                                 : Take(reader, &property.val, FixedBytes(property.propid)));
    if (value && TakeValue(reader, property.wFlags))
        return TRUE;
    if (value)
        FreeProperty(property);
    // Where a value's place isn't known, nothing that follows may be taken for one.
    EndReading(reader);
    return FALSE;
}

BOOL StepOverProperty(ImageReader& reader)
{
    CEPROPID property = 0;
    if (!TakeValue(reader, property))
        return FALSE;
    DWORD bytes = FixedBytes(property);
    if (HasSize(property) && !TakeValue(reader, bytes))
        return FALSE;
    return Take(reader, nullptr, std::uint64_t{bytes} + sizeof(WORD)) ? TRUE : FALSE;
}

void FreeProperty(const CEPROPVAL& property)
{
    if (IsText(property.propid))
        LocalFree(property.val.lpwstr);
    else if (HasSize(property.propid))
        LocalFree(property.val.blob.lpb);
}

BOOL StepOverRecords(ImageReader& reader, WORD records)
{
    for (; records > 0; records--) {
        WORD properties = 0;
        if (!ReadPropertyCount(reader, properties))
            return FALSE;
        for (; properties > 0; properties--) {
            if (!StepOverProperty(reader))
                return FALSE;
        }
    }
    return TRUE;
}
