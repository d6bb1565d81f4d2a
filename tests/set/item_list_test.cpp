#include "set/item_list.h"

#include "failing_memory.h"
#include "set_fixture.h"

#include <array>
#include <numeric>
#include <random>

namespace {

Bytes named(const std::u16string& name)
{
    return utf16(name + u'\0');
}

const BYTE* raw(const Bytes& blob)
{
    return reinterpret_cast<const BYTE*>(blob.data());
}

BOOL add(ItemList& list, const Bytes& blob)
{
    return list.Add(raw(blob), static_cast<DWORD>(blob.size()), blob.size());
}

BOOL contains(ItemList& list, const Bytes& key)
{
    return list.Contains(raw(key), static_cast<DWORD>(key.size()));
}

BOOL remove(ItemList& list, const Bytes& key)
{
    return list.Remove(raw(key), static_cast<DWORD>(key.size()));
}

// Compares the list with the simplest possible one. Whatever the order of calls, the index must not change a result.
TEST(ItemListTest, AnyOrderOfCallsGivesWhatALinearSearchGives)
{
    for (unsigned seed = 0; seed < 22; seed++) {
        const int fillingSteps = seed < 20 ? 0 : 3000;  // so that equal entries lie in several blocks of the index
        std::mt19937 random(seed);
        ItemList list(1);
        std::vector<Bytes> model;
        for (int step = 0; step < 300 + 2 * fillingSteps; step++) {
            Bytes key(random() % 4, 0);
            for (char& byte : key)
                byte = static_cast<char>(random() % 2 == 0 ? 0x00 : 0xFF);
            const auto begins = [&](const Bytes& blob) {
                return blob.size() >= key.size() && std::equal(key.begin(), key.end(), blob.begin());
            };
            const auto same = std::find(model.begin(), model.end(), key);
            switch (step != 0 && step < fillingSteps ? 0 : random() % 3) {
            case 0:
                add(list, key);
                model.push_back(key);
                break;
            case 1:
                ASSERT_EQ(remove(list, key) != 0, same != model.end());
                if (same != model.end())
                    model.erase(same);
                break;
            default:
                ASSERT_EQ(contains(list, key) != 0, std::any_of(model.begin(), model.end(), begins));
            }
            ASSERT_EQ(list.Count(), model.size());
            ASSERT_EQ(list.IsEmpty() != 0, model.empty());
            if (fillingSteps == 0 || step % 100 == 0) {
                ASSERT_EQ(blobsOf(list), model);
                const auto bytes = [](std::size_t sum, const Bytes& blob) { return sum + blob.size(); };
                ASSERT_EQ(list.ContentBytes(), std::accumulate(model.begin(), model.end(), std::size_t{0}, bytes));
            }
        }
        for (const Bytes& blob : model)
            ASSERT_TRUE(remove(list, blob));
        EXPECT_TRUE(list.IsEmpty());
        EXPECT_FALSE(contains(list, {}));
    }
}

TEST(ItemListTest, WalkOfAnEmptyListOrFromARemovedEntryGivesNothing)
{
    ItemList list(7);
    EXPECT_EQ(list.id, 7U);
    EntryBuffer entry;
    DWORD length = 0;
    EXPECT_FALSE(list.Next(entry.bytes, &length)) << "without a First";
    EXPECT_FALSE(list.First(entry.bytes, &length));
    EXPECT_FALSE(list.Next(entry.bytes, &length));
    add(list, named(u"A"));
    add(list, named(u"B"));
    list.First(entry.bytes, &length);
    remove(list, named(u"A"));
    EXPECT_FALSE(list.Next(entry.bytes, &length));
}

TEST(ItemListTest, EntryOfALoadedSetIsFoundByItsNameAndRemovedOnlyWithItsOffsets)
{
    EXPECT_EQ(SetEntryNameSize(u""), 4U);
    EXPECT_EQ(SetEntryNameSize(u"X"), 4U);
    EXPECT_EQ(SetEntryNameSize(u"XY"), 8U);
    EXPECT_EQ(SetEntryNameSize(std::u16string(259, u'x').c_str()) + OffsetsBytes, LargestEntryBytes);

    ItemList list(1);
    EntryBuffer entry;
    CopyText(entry.name, NameChars, u"\\a");
    const DWORD bytes = SetEntryOffsets(entry, 3, 9);
    EXPECT_EQ(bytes, 8U + OffsetsBytes);
    list.Add(entry.bytes, bytes);
    EXPECT_TRUE(contains(list, named(u"\\a")));
    EXPECT_TRUE(list.Contains(nullptr, 0)) << "every entry begins with no bytes";
    EXPECT_FALSE(remove(list, named(u"\\a")));
    EXPECT_TRUE(list.Remove(entry.bytes, bytes));
}

TEST(ItemListTest, WithoutMemoryAddChangesNothingAndSearchesStillAnswer)
{
    const Bytes a = named(u"A"), b = named(u"B");
    for (const bool searchedBefore : {false, true}) {
        for (unsigned long nth = 1; nth <= 3; nth++) {
            ItemList list(1);
            add(list, a);
            if (searchedBefore)
                contains(list, a);
            failAllocationsFrom(nth);
            const BOOL added = add(list, b);
            const std::array found = {contains(list, a), contains(list, b), remove(list, a), contains(list, a)};
            failAllocationsFrom(0);
            EXPECT_EQ(added, nth > 2 ? 1 : 0);
            EXPECT_EQ(found, (std::array{1, added, 1, 0}));
            EXPECT_EQ(blobsOf(list), added ? Blobs{b} : Blobs{});
            EXPECT_EQ(contains(list, b), added) << "also by a search with memory again";
        }
    }
    failAllocationsFrom(1);
    ItemList none(1);
    failAllocationsFrom(0);
    EXPECT_FALSE(add(none, a) || contains(none, a) || remove(none, a));
    EXPECT_TRUE(blobsOf(none).empty());
}

}  // namespace
