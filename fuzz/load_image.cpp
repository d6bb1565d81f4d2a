// load_image.cpp - any bytes as a database image. Whatever they are, what is read must be texts that end and no more
// than the file holds, and stepping over must agree with reading.

#include "set/image_reader.h"
#include "temporary_root.h"

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

// The bytes of a text or blob, each of which is touched.
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

// Whether all records are there.
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
                require(!ReadPropertyCount(reader, properties));  // nothing is read behind an end
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
            if (!StepOverProperty(reader))
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
