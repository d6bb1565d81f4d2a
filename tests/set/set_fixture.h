// set_fixture.h - the device of the set's tests, and what its files and lists contain.
#pragma once

#include "file_fixture.h"

#include "set/set_state.h"
#include "written_bytes.h"

#include <tuple>
#include <vector>

using Bytes = std::string;
using Blobs = std::vector<Bytes>;
// Name, start offset and end offset.
using LoadedItem = std::tuple<std::u16string, DWORD, DWORD>;

// The first bytes of a stream, and the block that ends it.
inline const Bytes magic = hex("51 42 58 50 4B");
inline const Bytes closing = hex("03 00 00 00  11 00 00");

class SetTest : public FileTest {
protected:
    SetTest() : FileTest(memoryFolder())
    {
        RenewLists();
        gRegistryMarked = 0;
        gRegistryEntry = {};
        gComment[0] = 0;
    }
    ~SetTest() override
    {
        delete gFileList;
        delete gDatabaseList;
        gFileList = gDatabaseList = nullptr;
    }

    // Mounts an empty card `\Card`. Its files together can contain `capacity` bytes.
    void addCard(std::uint64_t capacity) const
    {
        remount();
        std::filesystem::remove_all(outside() / "mounted Card");
        addFolder(u"Card", true, capacity);
    }

    static Bytes read(const std::u16string& path)
    {
        EXPECT_TRUE(exists(path.c_str()));
        return readAll(path, 1'000'000);
    }
    static bool exists(const WCHAR* path) { return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES; }
};

// blobsOf() returns the entries of a list in order, each as its whole blob. itemsOf() returns the entries of a list of
// a loaded set, each as its name and its two offsets.
inline Blobs blobsOf(ItemList& list)
{
    Blobs blobs;
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list.First(entry.bytes, &length); more; more = list.Next(entry.bytes, &length))
        blobs.emplace_back(entry.bytes, entry.bytes + length);
    return blobs;
}

inline std::vector<LoadedItem> itemsOf(ItemList* list)
{
    std::vector<LoadedItem> items;
    ForEachEntry(list, [&](const EntryBuffer& entry) {
        items.emplace_back(entry.name, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes));
    });
    return items;
}
