#include "set/list_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

// The size in bytes of the fields for kind and flag. If the file ends right after these fields, they aren't an entry.
constexpr DWORD KindBytes = 2;

// Returns the faults of a text that has `length` characters in the file. The buffer `text` has room for `room`
// characters and contains the first `characters` characters.
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

// Reads a text that has `length` characters in the file, including its NUL. Stores at most `room` of them and skips the
// others. Always terminates the text. Returns ListFault bits.
DWORD TakeText(ListReader& reader, DWORD length, WCHAR* text, DWORD room)
{
    const DWORD kept = std::min(length, room);
    const DWORD characters = TakeBytes(reader, text, kept * DWORD{sizeof(WCHAR)}) / DWORD{sizeof(WCHAR)};
    const bool whole = SkipBytes(reader, std::uint64_t{length - kept} * sizeof(WCHAR)) && characters == kept;
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
    StartReader(reader, file);
    reader.bytesAfterEntries = 0;
}

DWORD ReadListHead(ListReader& reader, WCHAR (&comment)[CommentChars])
{
    comment[0] = 0;
    DWORD length = 0;
    if (!TakeValue(reader, length))
        return CutByEndOfFile;
    const DWORD faults = TakeText(reader, length, comment, CommentChars);
    const std::size_t characters = wcslen(comment);
    if (length >= CommentChars && characters == CommentChars - 1 && IsHighSurrogate(comment[characters - 1]))
        comment[characters - 1] = 0;  // the first half of a surrogate pair whose second half was cut
    return faults;
}

bool ReadListEntry(ListReader& reader, ListEntry& entry)
{
    BYTE kindAndFlag[KindBytes] = {};
    const DWORD begun = TakeBytes(reader, kindAndFlag, KindBytes);
    entry.nameLength = 0;
    const DWORD lengthBytes = TakeBytes(reader, &entry.nameLength, sizeof entry.nameLength);
    if (lengthBytes == 0) {
        reader.bytesAfterEntries = begun;
        return false;
    }
    entry.kind = kindAndFlag[0];
    entry.flag = kindAndFlag[1];
    entry.blob = {};
    entry.faults = lengthBytes < sizeof entry.nameLength
                       ? DWORD{CutByEndOfFile}
                       : TakeText(reader, entry.nameLength, entry.blob.name, NameChars);
    DWORD offsets[2] = {};
    if (!TakeValue(reader, offsets)) {
        entry.faults |= CutByEndOfFile;
        offsets[0] = offsets[1] = 0;
    }
    entry.startOffset = offsets[0];
    entry.endOffset = offsets[1];
    entry.blobBytes = SetEntryOffsets(entry.blob, entry.startOffset, entry.endOffset);
    return true;
}

DWORD SkipListEntries(ListReader& reader, const BYTE* stop)
{
    constexpr DWORD HeadBytes = KindBytes + sizeof(DWORD);
    constexpr DWORD EndBytes = 2 * sizeof(DWORD);
    const BYTE* next = reader.buffer + reader.next;
    DWORD skipped = 0;
    for (; stop - next >= std::ptrdiff_t{HeadBytes} && *next != ItemKindRegistry; skipped++) {
        DWORD length = 0;
        std::memcpy(&length, next + KindBytes, sizeof length);
        const auto entryBytes = static_cast<std::ptrdiff_t>(HeadBytes + length * sizeof(WCHAR) + EndBytes);
        if (length == 0 || length > NameChars || stop - next < entryBytes)
            break;
        next += entryBytes;
    }
    reader.next = static_cast<DWORD>(next - reader.buffer);
    return skipped;
}

bool NameIsUsable(const ListEntry& entry)
{
    return !KindOf(entry.kind).list || (entry.faults & (TextEmpty | TextTooLong | TextNotTerminated)) == 0;
}
