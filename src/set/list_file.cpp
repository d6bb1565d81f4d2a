#include "set/list_file.h"

#include "set/list_reader.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

namespace {

// The value of the flag field. Readers ignore it.
constexpr BYTE EntryFlag = 1;

constexpr WCHAR DataEnding[] = u"QDT";
constexpr std::size_t EndingChars = 3;

// A write of too few bytes is a failure, even if the call reports success.
bool Write(HANDLE file, const void* bytes, DWORD count)
{
    DWORD written = 0;
    return WriteFile(file, bytes, count, &written, nullptr) && written == count;
}

// The state while the fields of an entry are written. After a failed write the remaining fields are still written.
struct EntryWriter {
    HANDLE list;
    WriteFailed failed;
    void* context;
    DWORD failures;
};

void WriteField(EntryWriter& writer, const void* bytes, DWORD count)
{
    if (Write(writer.list, bytes, count))
        return;
    writer.failures++;
    if (writer.failed)
        writer.failed(writer.context);
}

struct ListLoad {
    EntryFilter keep;
    void* context;
    bool lacksEntries;  // the file ends in the comment, or an entry was left out because of damage, or its name ends
                        // early, or its kind may be wrong
    bool hasRegistry;   // gRegistryEntry was set by an entry with a stream
};

bool Keeps(const ListLoad& load, BYTE kind, const ListEntry& entry)
{
    return !load.keep || load.keep(kind, entry.blob.name, load.context);
}

void AddToList(const ItemKind& kind, const ListEntry& entry)
{
    ItemList* list = *kind.list;
    if (!list || !list->Add(entry.blob.bytes, entry.blobBytes, EntryStreamBytes(entry.blob.bytes)))
        ReportItem(OutcomeNotRestored, kind.reportedAs, entry.blob.name, ERROR_NOT_ENOUGH_MEMORY);
}

// An entry of an unknown kind counts as a registry entry. If the list has several registry entries, the last one is
// used. But an entry without a stream doesn't replace an entry with a stream, because it may come from damage: a run
// of zero bytes is read as an entry without a stream, and so is an entry that the end of the file cuts off.
void TakeRegistry(ListLoad& load, const ListEntry& entry)
{
    const bool namesStream = entry.endOffset > entry.startOffset;
    // A backup writes at most one registry entry and no unknown kind. So a second registry entry, or an entry of an
    // unknown kind, may be the damaged entry of a file or database.
    load.lacksEntries |= load.hasRegistry || entry.kind != ItemKindRegistry;
    if (load.hasRegistry && !namesStream)
        return;
    if (!Keeps(load, ItemKindRegistry, entry)) {
        gRegistryMarked = 0;
        return;
    }
    load.hasRegistry = namesStream;
    gRegistryMarked = 1;
    gRegistryEntry = entry.blob;
}

void TakeEntry(ListLoad& load, const ListEntry& entry)
{
    const ItemKind& kind = KindOf(entry.kind);
    if (!kind.list) {
        TakeRegistry(load, entry);
        return;
    }
    load.lacksEntries |= !NameIsUsable(entry) || (entry.faults & TextEndsEarly) != 0;
    if (NameIsUsable(entry) && Keeps(load, entry.kind, entry))
        AddToList(kind, entry);
}

}  // namespace

BOOL WriteListHead(HANDLE list, const WCHAR* comment)
{
    const DWORD bytes = NameBytes(comment);
    const DWORD characters = bytes / DWORD{sizeof(WCHAR)};
    return Write(list, &characters, sizeof characters) && Write(list, comment, bytes);
}

DWORD WriteEntryHead(HANDLE list, BYTE kind, const WCHAR* name, DWORD startOffset, WriteFailed failed, void* context)
{
    const DWORD nameBytes = NameBytes(name);
    const DWORD nameCharacters = nameBytes / DWORD{sizeof(WCHAR)};
    EntryWriter writer = {list, failed, context, 0};
    WriteField(writer, &kind, sizeof kind);
    WriteField(writer, &EntryFlag, sizeof EntryFlag);
    WriteField(writer, &nameCharacters, sizeof nameCharacters);
    WriteField(writer, name, nameBytes);
    WriteField(writer, &startOffset, sizeof startOffset);
    return writer.failures;
}

BOOL WriteEntryEnd(HANDLE list, DWORD endOffset)
{
    return Write(list, &endOffset, sizeof endOffset);
}

BOOL LoadList(const WCHAR* listPath, EntryFilter keep, void* context)
{
    const HANDLE list = CreateFileW(listPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (list == INVALID_HANDLE_VALUE)
        return FALSE;
    RenewLists();
    ListReader reader;
    StartListReader(reader, list);
    const DWORD faults = ReadListHead(reader, gComment);  // if the comment is damaged, its readable beginning is shown
    ListLoad load = {keep, context, (faults & CutByEndOfFile) != 0, false};
    ListEntry entry;
    while (ReadListEntry(reader, entry))
        TakeEntry(load, entry);
    CloseHandle(list);
    if (load.lacksEntries || reader.readError != ERROR_SUCCESS || reader.bytesAfterEntries != 0)
        ReportItem(OutcomeNotRestored, OutcomeFile, listPath, ERROR_FILE_CORRUPT);
    return TRUE;
}

void DataPathOfList(WCHAR (&dataPath)[MAX_PATH], const WCHAR* listPath)
{
    const std::size_t characters = CopyText(dataPath, listPath);
    if (characters < EndingChars)
        dataPath[0] = 0;
    else
        CopyText(dataPath + characters - EndingChars, EndingChars + 1, DataEnding);
}
