// buffered_reader.h - reads a file from its beginning to its end through a buffer. The readers of list files and
// database images use it.
#pragma once

#include "ce/types.h"

inline constexpr DWORD ReaderBufferBytes = 16384;

// This structure is too large for the stack frame of a recursive function.
struct BufferedReader {
    HANDLE file;
    BYTE buffer[ReaderBufferBytes];
    DWORD filled;          // bytes in the buffer
    DWORD next;            // index of the first byte in the buffer that isn't taken yet
    std::uint64_t unread;  // bytes of the file after those in the buffer
    DWORD readError;       // error of the failed call; ERROR_HANDLE_EOF if a read returned too few bytes; otherwise 0
};

// Prepares to read `file`, whose current position must be 0. If the length of the file can't be found out, the call
// sets readError and treats the file as empty.
void StartReader(BufferedReader& reader, HANDLE file);

// Returns the number of bytes that aren't taken yet. After a failed read only the bytes in the buffer are counted.
inline std::uint64_t BytesLeft(const BufferedReader& reader)
{
    return reader.filled - reader.next + reader.unread;
}

// Copies the next `bytes` bytes, or as many as are left, into `target`. Returns the number of copied bytes.
DWORD TakeBytes(BufferedReader& reader, void* target, DWORD bytes);

// Skips the next `bytes` bytes, or as many as are left, without reading them. Returns false if fewer bytes were left,
// or if the position in the file can't be changed.
bool SkipBytes(BufferedReader& reader, std::uint64_t bytes);

// Takes a value of a fixed size. If fewer bytes are left, it takes those and returns false.
template <class Value>
bool TakeValue(BufferedReader& reader, Value& value)
{
    return TakeBytes(reader, &value, sizeof value) == sizeof value;
}
