// buffered_reader.h - reads a file from its current position to its end through a buffer, for the list and the image.
#pragma once

#include "ce/types.h"

inline constexpr DWORD ReaderBufferBytes = 16384;

// Too large for the stack frame of a recursive function.
struct BufferedReader {
    HANDLE file;
    BYTE buffer[ReaderBufferBytes];
    DWORD filled;          // bytes in the buffer
    DWORD next;            // index of the first byte in the buffer that isn't taken yet
    std::uint64_t unread;  // bytes of the file after those in the buffer
    DWORD readError;       // of the call that failed; ERROR_HANDLE_EOF if a read returned too few bytes; otherwise 0
};

// Begins to read `file`, which is at its start. If its length can't be found out, readError is set and it counts as
// empty.
void StartReader(BufferedReader& reader, HANDLE file);

// Bytes that aren't taken yet. After a failed read only those in the buffer count.
inline std::uint64_t BytesLeft(const BufferedReader& reader)
{
    return reader.filled - reader.next + reader.unread;
}

// Copies the next `bytes` bytes, or as many as are left, into `target`. Returns how many.
DWORD TakeBytes(BufferedReader& reader, void* target, DWORD bytes);

// Skips the next `bytes` bytes, or as many as are left, without reading them. Returns whether there were that many.
bool SkipBytes(BufferedReader& reader, std::uint64_t bytes);

// Takes a value of a fixed size. False if fewer bytes are left, which are then taken.
template <class Value>
bool TakeValue(BufferedReader& reader, Value& value)
{
    return TakeBytes(reader, &value, sizeof value) == sizeof value;
}
