#include "set/buffered_reader.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>

namespace {

// Sets readError and stops further reading from the file, because the file's length or its current position is unknown
// after a failure. The bytes that are already in the buffer can still be taken.
void Fail(BufferedReader& reader, DWORD error)
{
    reader.readError = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
    reader.unread = 0;
}

void Refill(BufferedReader& reader)
{
    reader.next = 0;
    reader.filled = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::uint64_t>(ReaderBufferBytes, reader.unread));
    if (wanted == 0)
        return;
    if (!ReadFile(reader.file, reader.buffer, wanted, &reader.filled, nullptr))
        Fail(reader, GetLastError());
    else if (reader.filled < wanted)
        Fail(reader, ERROR_HANDLE_EOF);  // the file has shrunk since it was measured, or its disk fails
    else
        reader.unread -= wanted;
}

}  // namespace

void StartReader(BufferedReader& reader, HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    reader.file = file;
    reader.filled = 0;
    reader.next = 0;
    reader.readError = ERROR_SUCCESS;
    if (!GetFileInformationByHandle(file, &information))
        Fail(reader, GetLastError());
    else
        reader.unread = std::uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
}

DWORD TakeBytes(BufferedReader& reader, void* target, DWORD bytes)
{
    DWORD taken = 0;
    while (taken < bytes) {
        if (reader.next == reader.filled)
            Refill(reader);
        const DWORD piece = std::min(bytes - taken, reader.filled - reader.next);
        if (piece == 0)
            break;
        std::memcpy(static_cast<BYTE*>(target) + taken, reader.buffer + reader.next, piece);
        reader.next += piece;
        taken += piece;
    }
    return taken;
}

bool SkipBytes(BufferedReader& reader, std::uint64_t bytes)
{
    const bool enough = bytes <= BytesLeft(reader);
    const DWORD buffered = reader.filled - reader.next;
    if (bytes <= buffered) {
        reader.next += static_cast<DWORD>(bytes);
        return true;
    }
    reader.next = reader.filled;
    const std::uint64_t distance = std::min(bytes - buffered, reader.unread);
    auto high = static_cast<LONG>(distance >> 32);
    SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(reader.file, static_cast<LONG>(distance & 0xFFFFFFFF), &high, FILE_CURRENT) ==
            INVALID_SET_FILE_POINTER &&
        GetLastError() != ERROR_SUCCESS) {
        Fail(reader, GetLastError());
        return false;
    }
    reader.unread -= distance;
    return enough;
}
