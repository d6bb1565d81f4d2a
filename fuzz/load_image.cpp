// load_image.cpp - reads any bytes as a database image. All texts that are read must be terminated. Texts and blobs
// together must not be larger than the file. Skipping the records must succeed exactly if reading them does.

#include "require.h"
#include "set/image_reader.h"
#include "temporary_root.h"

namespace {

// Returns the number of bytes in a text or blob. Reads each byte, so that a sanitizer detects bytes outside of a
// buffer.
std::size_t contentOf(const CEPROPVAL& property)
{
    if (LOWORD(property.propid) == CEVT_LPWSTR)
        return wcslen(property.val.lpwstr) * sizeof(WCHAR);
    if (LOWORD(property.propid) != CEVT_BLOB)
        return 0;
    volatile unsigned sum = 0;
    for (DWORD i = 0; i < property.val.blob.dwCount; ++i)
        sum = sum + property.val.blob.lpb[i];
    return property.val.blob.dwCount;
}

// Returns true if all records can be read.
bool readRecords(ImageReader& reader, WORD records, std::size_t fileBytes)
{
    std::size_t content = 0;
    for (; records > 0; --records) {
        WORD properties = 0;
        if (!ReadPropertyCount(reader, properties))
            return false;
        for (; properties > 0; --properties) {
            CEPROPVAL property;
            if (!ReadProperty(reader, property)) {
                require(!ReadPropertyCount(reader, properties));  // after a failure the reader must read nothing more
                return false;
            }
            content += contentOf(property);
            FreeProperty(property);
        }
    }
    require(content <= fileBytes);
    return true;
}

bool stepOverRecords(ImageReader& reader, WORD records)
{
    WORD properties = 0;
    for (; records > 0 && ReadPropertyCount(reader, properties); --records)
        for (; properties > 0; --properties)
            if (!SkipProperty(reader))
                return false;
    return records == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    TemporaryRoot::write(u"\\A.CDB", data, size);
    const HANDLE image = CreateFileW(u"\\A.CDB", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    require(image != INVALID_HANDLE_VALUE);
    ImageReader reader;
    ImageHeader header;
    StartImageReader(reader, image);
    if (ReadImageHeader(reader, header)) {
        require(header.name[0] != 0 && wcslen(header.name) < NameChars);
        require(header.sortCount <= ImageSortOrders);
        const bool whole = readRecords(reader, header.recordCount, size);
        StartImageReader(reader, image);
        require(ReadImageHeader(reader, header) != 0);
        require(stepOverRecords(reader, header.recordCount) == whole);
    }
    CloseHandle(image);
    return 0;
}
