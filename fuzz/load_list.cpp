// load_list.cpp - loads any bytes as a list file. The loaded entries and names must be within the limits that the runs
// rely on.

#include "require.h"
#include "set/list_file.h"
#include "set/set_state.h"
#include "temporary_root.h"

namespace {

void checkEntries(ItemList* list, std::size_t fileBytes)
{
    EntryBuffer entry;
    DWORD length = 0;
    DWORD count = 0;
    for (BOOL more = list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length), count++) {
        require(length <= LargestEntryBytes);
        require(length == SetEntryNameSize(entry.name) + OffsetsBytes);
        require(wcslen(entry.name) < NameChars);
        require(list->Contains(entry.name, NameBytes(entry.name)) != 0);
        (void)EntryStartOffset(entry.bytes);
        (void)EntryEndOffset(entry.bytes);
    }
    require(count == list->Count());
    require(count <= fileBytes / 3);  // an entry has at least three bytes
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    TemporaryRoot::write(u"\\A.QLT", data, size);
    gRegistryMarked = 0;
    require(LoadList(u"\\A.QLT") != 0);
    checkEntries(gFileList, size);
    checkEntries(gDatabaseList, size);
    require(wcslen(gComment) < CommentChars);
    require(wcslen(gRegistryEntry.name) < NameChars);

    const DWORD files = gFileList->Count();
    const EntryFilter odd = [](BYTE, const WCHAR* name, void*) { return wcslen(name) % 2 == 1; };
    require(LoadList(u"\\A.QLT", odd) != 0);
    require(gFileList->Count() <= files);
    return 0;
}
