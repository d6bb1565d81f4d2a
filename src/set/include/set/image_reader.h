// image_reader.h - reads a database image, whole or damaged (docs/format.md, "Database image").
//
// Each count and size is compared with the bytes that the file has before it is used, so a damaged image can't make the
// reader allocate more than that.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"

#include "ce/store.h"
#include "ce/types.h"

// An image with more sort orders is refused. No device makes more than 4.
inline constexpr DWORD ImageSortOrders = 90;
// A record with more properties is read into allocated memory.
inline constexpr DWORD ImageProperties = 255;

struct ImageReader : BufferedReader {
    DWORD content;  // bytes of texts and blobs in the current record so far
    DWORD error;    // of the first call that returned 0
};

struct ImageHeader {
    WCHAR name[NameChars];
    DWORD type;
    WORD recordCount;
    WORD sortCount;
    SORTORDERSPEC sortSpecs[ImageSortOrders];
};

// Begins to read `file`, which is open for reading, at its start.
void StartImageReader(ImageReader& reader, HANDLE file);

// Reads the fields before the first record. 0 if the file ends within them (error 38). Also 0, with error 31, if the
// name is empty, longer than 260 characters, has an odd number of bytes or no NUL, or if there are more than
// ImageSortOrders. No record can be read then.
BOOL ReadImageHeader(ImageReader& reader, ImageHeader& header);

// A record is the number of its properties, then the properties. Each call returns 0 if the file ends too early (38) or
// can't be read (the error of the read), and so do all calls after that.
BOOL ReadPropertyCount(ImageReader& reader, WORD& count);

// A text or blob is allocated by LocalAlloc, to be freed by FreeProperty. A text always ends in a NUL; an odd byte at
// its end is dropped. For a type that has no value in an image `val` is all zeros. On 0 nothing is allocated. 0 also if
// there is no memory for the value (8), or if the texts and blobs of the record are more than a database takes (31):
// then the property is skipped, and the next call reads the one after it.
BOOL ReadProperty(ImageReader& reader, CEPROPVAL& property);
BOOL SkipProperty(ImageReader& reader);
void FreeProperty(const CEPROPVAL& property);
