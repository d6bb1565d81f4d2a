#include "set_fixture.h"

SetTest::SetTest() : FileTest(memoryFolder())
{
    RenewLists();
    gRegistryMarked = 0;
    gRegistryEntry = {};
    gComment[0] = 0;
}

SetTest::~SetTest()
{
    delete gFileList;
    delete gDatabaseList;
    gFileList = gDatabaseList = nullptr;
}

void SetTest::addCard(std::uint64_t capacity) const
{
    remount();
    std::filesystem::remove_all(outside() / "mounted Card");
    addFolder(u"Card", true, capacity);
}

Bytes SetTest::read(const std::u16string& path)
{
    EXPECT_TRUE(exists(path.c_str()));
    return readAll(path, 1'000'000);
}

bool SetTest::exists(const WCHAR* path)
{
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

Blobs blobsOf(ItemList& list)
{
    Blobs blobs;
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list.First(entry.bytes, &length); more; more = list.Next(entry.bytes, &length))
        blobs.emplace_back(entry.bytes, entry.bytes + length);
    return blobs;
}

std::vector<LoadedItem> itemsOf(ItemList* list)
{
    std::vector<LoadedItem> items;
    ForEachEntry(list, [&](const EntryBuffer& entry) {
        items.emplace_back(entry.name, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes));
    });
    return items;
}
