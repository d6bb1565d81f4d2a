// image_reader.h - reads a database image, whole or damaged (docs/format.md, "Database image").
//
// The reader compares the size of a text or blob with the number of bytes that are left in the file before it allocates
// memory. So a damaged size can't make it allocate more memory than the file has bytes.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"

#include "ce/store.h"
#include "ce/types.h"

// The largest number of sort orders in an image. An image with more is refused. No device makes an image with more than
// 4.
inline constexpr DWORD ImageSortOrders = 90;
// The properties of a record are read into an array on the stack if there are at most this many, otherwise into
// allocated memory.
inline constexpr DWORD ImageProperties = 255;

struct ImageReader : BufferedReader {
    DWORD content;  // bytes of the texts and blobs that were read from the current record so far
    DWORD error;    // error of the first call that returned 0
};

struct ImageHeader {
    WCHAR name[NameChars];
    DWORD type;
    WORD recordCount;
    WORD sortCount;
    SORTORDERSPEC sortSpecs[ImageSortOrders];
};

// Prepares to read the image in `file` from its start. The file must be open for reading.
void StartImageReader(ImageReader& reader, HANDLE file);

// Reads the fields before the first record. Returns 0 with error 38 if the file ends within them, and with the error of
// the read if the file can't be read. Returns 0 with error 31 if there are more than ImageSortOrders sort orders, or if
// the name isn't valid. A name isn't valid in these cases:
// - It is empty.
// - It has more than 260 characters, including its NUL.
// - It has an odd number of bytes.
// - It doesn't end in a NUL.
// After a result of 0 the position of the first record is unknown.
BOOL ReadImageHeader(ImageReader& reader, ImageHeader& header);

// Reads the number of properties, with which each record begins. This call, ReadProperty and SkipProperty return 0 with
// error 38 if the file ends too early, and with the error of the read if the file can't be read. After one of these two
// errors, each further call returns 0.
BOOL ReadPropertyCount(ImageReader& reader, WORD& count);

// ReadProperty reads the next property. It allocates a text or blob by LocalAlloc, and FreeProperty frees that memory.
// A text always ends in a NUL. If a text has an odd number of bytes, its last byte is dropped. If an image contains no
// value for properties of this type, `val` is all zeros. If ReadProperty returns 0, nothing is allocated.
//
// In two further cases ReadProperty fails and skips the property. The next call then reads the following property.
// ReadProperty returns 0 with error 8 if there is no memory for the value. It returns 0 with error 31 if the texts and
// blobs of the record are larger than a database accepts.
BOOL ReadProperty(ImageReader& reader, CEPROPVAL& property);
BOOL SkipProperty(ImageReader& reader);
void FreeProperty(const CEPROPVAL& property);
