// list_reader.cpp - see list_reader.h.

#include "set/list_reader.h"

#include "ce/file.h"

#include <algorithm>
#include <cstring>

namespace {

// Fewer bytes than these open no entry: kind and flag alone say nothing.
constexpr DWORD KindBytes = 2;

// Fills the buffer anew once all of it is taken.
void Refill(ListReader& reader)
{
    reader.next = 0;
    reader.filled = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::uint64_t>(ListBufferBytes, reader.unread));
    if (wanted == 0)
        return;
    // The file can have shrunk since it was measured, or the disk gives less than it holds: then this is the end.
    if (!ReadFile(reader.file, reader.buffer, wanted, &reader.filled, nullptr) || reader.filled < wanted)
        reader.readFailed = true;
    reader.unread = reader.readFailed ? 0 : reader.unread - reader.filled;
}

// Takes up to `bytes` bytes; fewer only at the end of the file. Returns how many.
DWORD Take(ListReader& reader, void* target, DWORD bytes)
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

// Steps over `bytes` bytes, or to the end of the file if it has fewer. Returns whether it had them.
bool StepOver(ListReader& reader, std::uint64_t bytes)
{
    const DWORD buffered = reader.filled - reader.next;
    if (bytes <= buffered) {
        reader.next += static_cast<DWORD>(bytes);
        return true;
    }
    bytes -= buffered;
    reader.next = reader.filled;
    const bool there = bytes <= reader.unread;
    const std::uint64_t distance = std::min(bytes, reader.unread);
    LONG high = static_cast<LONG>(distance >> 32);
    SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(reader.file, static_cast<LONG>(distance & 0xFFFFFFFF), &high, FILE_CURRENT) ==
            INVALID_SET_FILE_POINTER &&
        GetLastError() != ERROR_SUCCESS) {
        reader.readFailed = true;
        reader.unread = 0;
        return false;
    }
    reader.unread -= distance;
    return there;
}

// What is wrong with a text of `length` characters, of which `characters` stand in a buffer for `room`.
DWORD FaultsOfText(const WCHAR* text, DWORD characters, DWORD length, DWORD room)
{
    if (length == 0)
        return TextEmpty;
    if (length > room)
        return TextTooLong;
    const WCHAR* end = std::find(text, text + characters, WCHAR{0});
    if (end == text + length)
        return TextNotTerminated;
    return end + 1 == text + length ? 0 : DWORD{TextEndsEarly};
}

// Takes a text of which the file says that it has `length` characters with its terminator. As much as fits `room`
// stays, and a NUL always ends it.
DWORD TakeText(ListReader& reader, DWORD length, WCHAR* text, DWORD room)
{
    const DWORD kept = std::min(length, room);
    const DWORD characters = Take(reader, text, kept * DWORD{sizeof(WCHAR)}) / DWORD{sizeof(WCHAR)};
    const bool whole = StepOver(reader, std::uint64_t{length - kept} * sizeof(WCHAR)) && characters == kept;
    const DWORD faults = whole ? FaultsOfText(text, characters, length, room) : DWORD{CutByEndOfFile};
    text[std::min(characters, room - 1)] = 0;
    return faults | (length > room ? DWORD{TextTooLong} : 0);
}

bool IsHighSurrogate(WCHAR character)
{
    return character >= 0xD800 && character <= 0xDBFF;
}

}  // namespace

void StartListReader(ListReader& reader, HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    reader.file = file;
    reader.filled = 0;
    reader.next = 0;
    reader.bytesBehindEntries = 0;
    reader.readFailed = !GetFileInformationByHandle(file, &information);
    reader.unread = std::uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
}

DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars])
{
    comment[0] = 0;
    DWORD length = 0;
    if (Take(reader, &length, sizeof length) < sizeof length)
        return CutByEndOfFile;
    const DWORD faults = TakeText(reader, length, comment, CommentChars);
    const std::size_t characters = wcslen(comment);
    if (length >= CommentChars && characters == CommentChars - 1 && IsHighSurrogate(comment[characters - 1]))
        comment[characters - 1] = 0;  // half a character is none
    return faults;
}

bool ReadListEntry(ListReader& reader, ListEntry& entry)
{
    BYTE kindAndFlag[KindBytes] = {};
    const DWORD begun = Take(reader, kindAndFlag, KindBytes);
    entry.nameLength = 0;
    const DWORD lengthBytes = Take(reader, &entry.nameLength, sizeof entry.nameLength);
    if (lengthBytes == 0) {
        reader.bytesBehindEntries = begun;
        return false;
    }
    entry.kind = kindAndFlag[0];
    entry.flag = kindAndFlag[1];
    entry.blob = {};
    entry.faults = lengthBytes < sizeof entry.nameLength
                       ? DWORD{CutByEndOfFile}
                       : TakeText(reader, entry.nameLength, entry.blob.name, NameChars);
    DWORD offsets[2] = {};
    if (Take(reader, offsets, sizeof offsets) < sizeof offsets) {
        entry.faults |= CutByEndOfFile;
        offsets[0] = offsets[1] = 0;
    }
    entry.startOffset = offsets[0];
    entry.endOffset = offsets[1];
    entry.blobBytes = SetEntryOffsets(entry.blob, entry.startOffset, entry.endOffset);
    return true;
}

bool NameIsUsable(const ListEntry& entry)
{
    if (entry.kind != ItemKindFile && entry.kind != ItemKindDatabase)
        return true;
    return (entry.faults & (TextEmpty | TextTooLong | TextNotTerminated)) == 0;
}
