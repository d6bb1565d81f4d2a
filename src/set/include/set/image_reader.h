// image_reader.h - the bytes of a database image, in their order, whatever state they are in (docs/format.md, "Database
// image").
//
// No count or size is believed before the file is known to have the bytes, so memory follows what is really there.
#pragma once

#include "set/buffered_reader.h"
#include "set/set_entry.h"

#include "ce/store.h"
#include "ce/types.h"

// What one image may have for its reader's array. No device makes more than 4 sort orders.
inline constexpr DWORD ImageSortOrders = 90;
// What a record may have to be read without a block of its own.
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

// Begins at the start of a file that is open for reading.
void StartImageReader(ImageReader& reader, HANDLE file);

// The fields before the first record. 0 if the file ends within them (38), and with 31 for a name that is empty, longer
// than 260 characters, of half a character or without its NUL, and for more than ImageSortOrders: no record can be read
// then.
BOOL ReadImageHeader(ImageReader& reader, ImageHeader& header);

// A record is its number of properties, then the properties. Each call gives 0 where the file ends too early (38) or
// can't be read (the file call's error), and so does every one that follows.
BOOL ReadPropertyCount(ImageReader& reader, WORD& count);

// A text or blob comes in a block of LocalAlloc, for FreeProperty. A text always ends in a NUL; half a character at its
// end is left out. Of a type that has no value in an image, `val` is all zeros. On 0 there is no block.
// 0 also for a value for which there is no memory (8), and where the record's texts and blobs are more than a database
// takes (31): that one is stepped over, and reading goes on behind it.
BOOL ReadProperty(ImageReader& reader, CEPROPVAL& property);
BOOL StepOverProperty(ImageReader& reader);
void FreeProperty(const CEPROPVAL& property);
