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

// Of a stream: its first bytes, and the block that ends it.
inline const Bytes magic = hex("51 42 58 50 4B");
inline const Bytes closing = hex("03 00 00 00  11 00 00");

class SetTest : public FileTest {
protected:
    SetTest();
    ~SetTest() override;

    // Mounts an empty card `\Card` whose files can contain this many bytes together.
    void addCard(std::uint64_t capacity) const;

    static Bytes read(const std::u16string& path);
    static bool exists(const WCHAR* path);
};

// The entries of a list in its order: the whole blobs, and those of a loaded set by their fields.
Blobs blobsOf(ItemList& list);
std::vector<LoadedItem> itemsOf(ItemList* list);
