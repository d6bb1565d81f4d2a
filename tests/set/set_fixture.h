// set_fixture.h - a root folder and a small card in a temporary place, and the bytes of files in them.
#pragma once

#include "set/set_state.h"

#include "ce/file.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<BYTE>;
using Blobs = std::vector<Bytes>;

// "51 42 58" and the like, blanks and line ends at will.
Bytes hex(std::string_view text);
Bytes operator+(Bytes left, const Bytes& right);
Bytes repeated(std::size_t count, BYTE value);

class SetTest : public testing::Test {
protected:
    SetTest();
    ~SetTest() override;

    // A folder `\Card` whose files may hold this many bytes together.
    void addCard(std::uint64_t capacity);

    static void write(const WCHAR* path, const Bytes& bytes);
    static Bytes read(const WCHAR* path);
    static bool exists(const WCHAR* path);

private:
    std::string folder;
};

// What stands in a list, in its order: the whole blobs.
Blobs blobsOf(ItemList& list);

// The same, for lists of a loaded set.
struct LoadedItem {
    std::u16string name;
    DWORD startOffset;
    DWORD endOffset;
    bool operator==(const LoadedItem&) const = default;
};
std::vector<LoadedItem> itemsOf(ItemList* list);
void PrintTo(const LoadedItem& item, std::ostream* out);
