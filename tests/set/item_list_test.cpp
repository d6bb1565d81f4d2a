#include "set/item_list.h"

#include "failing_memory.h"
#include "set_fixture.h"

#include <random>

namespace {

Bytes named(const std::u16string& name)
{
    const auto* bytes = reinterpret_cast<const BYTE*>(name.c_str());
    return {bytes, bytes + (name.size() + 1) * sizeof(WCHAR)};
}

BOOL add(ItemList& list, const Bytes& blob)
{
    return list.Add(blob.data(), static_cast<DWORD>(blob.size()));
}

BOOL contains(ItemList& list, const Bytes& key, std::size_t without = 0)
{
    return list.Contains(key.data(), static_cast<DWORD>(key.size() - without));
}

BOOL remove(ItemList& list, const Bytes& key, std::size_t without = 0)
{
    return list.Remove(key.data(), static_cast<DWORD>(key.size() - without));
}

constexpr std::size_t terminator = sizeof(WCHAR);

TEST(ItemListTest, EmptyListGivesNothingAndIsNotHarmedByNext)
{
    ItemList list(7);
    EntryBuffer entry;
    DWORD length = 0;
    EXPECT_FALSE(list.Next(entry.bytes, &length));
    EXPECT_FALSE(list.First(entry.bytes, &length));
    EXPECT_FALSE(list.Next(entry.bytes, &length));
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.Count(), 0U);
    EXPECT_EQ(list.head, list.tail);
    EXPECT_EQ(list.id, 7U);
    EXPECT_FALSE(list.Contains("", 0));
    EXPECT_FALSE(list.Remove("", 0));
}

TEST(ItemListTest, RemovingHeadAndLastEntryKeepsTheChainWhole)
{
    const Bytes a = named(u"A"), b = named(u"B"), c = named(u"C"), d = named(u"D");
    ItemList list(1);
    for (const Bytes& blob : {a, b, c})
        EXPECT_TRUE(add(list, blob));
    EXPECT_TRUE(remove(list, a));
    EXPECT_TRUE(add(list, d));
    EXPECT_EQ(list.Count(), 3U);
    EXPECT_EQ(blobsOf(list), (Blobs{b, c, d}));
    EXPECT_EQ(list.head->prev, nullptr);
    EXPECT_EQ(list.tail->next, nullptr);
    EXPECT_EQ(list.tail->data, nullptr);

    for (const Bytes& blob : {d, b, c})
        EXPECT_TRUE(remove(list, blob));
    EXPECT_EQ(list.head, list.tail);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_TRUE(add(list, a));
    EXPECT_EQ(blobsOf(list), (Blobs{a}));
}

TEST(ItemListTest, ContainsIsByPrefixAndRemoveIsExact)
{
    ItemList list(1);
    const Bytes file = named(u"\\a\\b.txt"), folder = named(u"\\a");
    add(list, file);
    EXPECT_TRUE(contains(list, folder, terminator));
    EXPECT_FALSE(contains(list, folder));
    EXPECT_FALSE(contains(list, named(u"\\A"), terminator)) << "case counts";
    EXPECT_FALSE(contains(list, named(u"\\a\\b.txt.old"), terminator)) << "a blob shorter than the key";
    EXPECT_TRUE(list.Contains(nullptr, 0)) << "nothing begins everything";
    EXPECT_FALSE(remove(list, file, terminator));
    EXPECT_FALSE(remove(list, folder, terminator));
    EXPECT_EQ(list.Count(), 1U);

    // An entry of a loaded set is found by its name and not removed by it.
    ItemList loaded(1);
    EntryBuffer entry;
    CopyText(entry.name, NameChars, u"\\a");
    EXPECT_EQ(SetEntryOffsets(entry, 3, 9), 8U + OffsetsBytes);
    loaded.Add(entry.bytes, 8 + OffsetsBytes);
    EXPECT_TRUE(contains(loaded, folder));
    EXPECT_FALSE(remove(loaded, folder));
}

TEST(ItemListTest, EntryOffsetsStandOnAMultipleOfFour)
{
    EXPECT_EQ(SetEntryNameSize(u""), 4U);
    EXPECT_EQ(SetEntryNameSize(u"X"), 4U);
    EXPECT_EQ(SetEntryNameSize(u"XY"), 8U);
    EXPECT_EQ(SetEntryNameSize(std::u16string(259, u'x').c_str()) + OffsetsBytes, LargestEntryBytes);
}

TEST(ItemListTest, OfEqualEntriesTheFirstAddedGoes)
{
    const Bytes twice = named(u"twice"), other = named(u"other");
    for (const bool searchedBefore : {false, true}) {
        ItemList list(1);
        if (searchedBefore)
            contains(list, other);
        for (const Bytes& blob : {twice, other, twice})
            add(list, blob);
        EXPECT_TRUE(remove(list, twice));
        EXPECT_EQ(blobsOf(list), (Blobs{other, twice}));
    }
}

TEST(ItemListTest, BrokenOffWalkDoesNotGoOnFromARemovedEntry)
{
    ItemList list(1);
    add(list, named(u"A"));
    add(list, named(u"B"));
    EntryBuffer entry;
    DWORD length = 0;
    list.First(entry.bytes, &length);
    remove(list, named(u"A"));
    EXPECT_FALSE(list.Next(entry.bytes, &length));
}

// Against the plainest list there is: whatever the order of calls, nothing of the search structure may show.
TEST(ItemListTest, AnyRowOfCallsGivesWhatAPlainSearchGives)
{
    for (unsigned seed = 0; seed < 20; seed++) {
        std::mt19937 random(seed);
        ItemList list(1);
        std::vector<Bytes> model;
        for (int step = 0; step < 300; step++) {
            Bytes key(random() % 4);
            for (BYTE& byte : key)
                byte = static_cast<BYTE>(random() % 2 == 0 ? 0x00 : 0xFF);
            const auto begins = [&](const Bytes& blob) {
                return blob.size() >= key.size() && std::equal(key.begin(), key.end(), blob.begin());
            };
            const auto same = std::find(model.begin(), model.end(), key);
            switch (random() % 3) {
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
            ASSERT_EQ(blobsOf(list), model);
            ASSERT_EQ(list.Count(), model.size());
        }
    }
}

// Enough of them that the search structure has to divide them, equal ones too.
TEST(ItemListTest, OfThousandsOfEqualEntriesStillTheFirstAddedGoes)
{
    std::mt19937 random(1);
    ItemList list(1);
    std::vector<Bytes> model;
    const std::vector<Bytes> names = {named(u"A"), named(u"AB"), named(u"B"), named(u"C")};
    contains(list, names.front());
    for (int step = 0; step < 4000; step++) {
        model.push_back(names[random() % names.size()]);
        add(list, model.back());
    }
    for (int step = 0; step < 2000; step++) {
        const Bytes& name = names[random() % names.size()];
        const auto first = std::find(model.begin(), model.end(), name);
        ASSERT_EQ(remove(list, name) != 0, first != model.end());
        if (first != model.end())
            model.erase(first);
    }
    EXPECT_EQ(blobsOf(list), model);
    for (const Bytes& name : names)
        while (remove(list, name)) {
        }
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_FALSE(contains(list, {}));
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
            const BOOL hasA = contains(list, a);
            const BOOL hasB = contains(list, b);
            const BOOL removedA = remove(list, a);
            failAllocationsFrom(0);
            EXPECT_EQ(added, nth > 2 ? 1 : 0);
            EXPECT_TRUE(hasA);
            EXPECT_EQ(hasB, added);
            EXPECT_TRUE(removedA);
            EXPECT_EQ(blobsOf(list), added ? Blobs{b} : Blobs{});
            EXPECT_EQ(contains(list, b), added) << "and so does the next search with memory";
            EXPECT_FALSE(contains(list, a));
        }
    }
    failAllocationsFrom(1);
    ItemList none(1);
    failAllocationsFrom(0);
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_FALSE(add(none, a));
    EXPECT_FALSE(contains(none, a));
    EXPECT_FALSE(remove(none, a));
    EXPECT_EQ(none.Count(), 0U);
    EXPECT_TRUE(blobsOf(none).empty());
}

// A search that walks the list would need hours for this.
TEST(ItemListTest, HundredThousandEntriesAreSearchedAndRemovedAHundredThousandTimes)
{
    ItemList list(1);
    std::vector<Bytes> names;
    for (int i = 0; i < 100000; i++) {
        const std::string digits = std::to_string(i * 7919 % 100000);
        names.push_back(named(u"\\My Documents\\" + std::u16string(digits.begin(), digits.end())));
        add(list, names.back());
    }
    for (const Bytes& name : names) {
        ASSERT_TRUE(contains(list, name));
        ASSERT_TRUE(contains(list, name, terminator));
        ASSERT_FALSE(contains(list, named(u"\\none")));
    }
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        ASSERT_TRUE(remove(list, *name));
    EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
