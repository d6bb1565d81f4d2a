// The resource file and its calls, with bytes written by hand: whatever they say, nothing outside of them is read, and
// whole entries are found.

#include "resource/resource_file.h"

#include "ce/resource.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace platform::resource {
namespace {

// 32 bytes of the empty entry; texts 16 to 31 with "ab" as 17 and "\U0001F4BEc" as 19; "Logo" of type "kind",
// one byte; nothing of type 3 as 9.
constexpr std::uint8_t SmallFile[] = {
    0x00, 0x00, 0x00, 0x00, 0x20, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00,  //
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
    // 42 bytes of texts, type 6, name 2
    0x2A, 0x00, 0x00, 0x00, 0x20, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x06, 0x00, 0xFF, 0xFF, 0x02, 0x00,  //
    0x00, 0x00, 0x00, 0x00, 0x30, 0x10, 0x09, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
    0x00, 0x00, 0x02, 0x00, 0x61, 0x00, 0x62, 0x00, 0x00, 0x00, 0x03, 0x00, 0x3D, 0xD8, 0xBE, 0xDC,  //
    0x63, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,                          //
    // 1 byte of type "kind", name "Logo": the names end at 28
    0x01, 0x00, 0x00, 0x00, 0x2C, 0x00, 0x00, 0x00, 0x6B, 0x00, 0x69, 0x00, 0x6E, 0x00, 0x64, 0x00,  //
    0x00, 0x00, 0x4C, 0x00, 0x6F, 0x00, 0x67, 0x00, 0x6F, 0x00, 0x00, 0x00,                          //
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
    0xEE, 0x00, 0x00, 0x00,                                                                          //
    // empty, type 3, name 9
    0x00, 0x00, 0x00, 0x00, 0x20, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x03, 0x00, 0xFF, 0xFF, 0x09, 0x00,  //
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
};
constexpr std::size_t TextsAt = 32;
constexpr std::size_t LogoAt = TextsAt + 76;

// A copy in a block of exactly that size, so that a sanitizer catches a read beyond its end.
class Copy {
public:
    explicit Copy(std::size_t size = sizeof SmallFile) : bytes_(new std::byte[size]), size_(size)
    {
        std::memcpy(bytes_.get(), SmallFile, size);
    }
    void put(std::size_t offset, std::uint32_t value) { std::memcpy(bytes_.get() + offset, &value, sizeof value); }
    [[nodiscard]] std::span<const std::byte> bytes() const { return {bytes_.get(), size_}; }

private:
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t size_;
};

TEST(ResourceFileTest, EntryIsFoundByNumberAndByTextWithoutCase)
{
    const Copy copy;
    const auto file = ResourceFile::parse(copy.bytes());
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->isWhole());
    ASSERT_EQ(file->entries().size(), 3u);
    const Resource* logo = file->find(u"KIND", u"lOGO");
    ASSERT_NE(logo, nullptr);
    ASSERT_EQ(logo->bytes.size(), 1u) << "padding counted as data";
    EXPECT_EQ(logo->bytes[0], std::byte{0xEE});
    ASSERT_NE(file->find(WORD{3}, WORD{9}), nullptr);
    EXPECT_EQ(file->find(WORD{3}, u"9"), nullptr);
    EXPECT_EQ(file->find(WORD{3}, WORD{8}), nullptr);
}

TEST(ResourceFileTest, FileCutAtAnyByteKeepsTheWholeEntriesBefore)
{
    for (std::size_t size = 0; size < sizeof SmallFile; ++size) {
        SCOPED_TRACE(size);
        const Copy copy(size);
        const auto file = ResourceFile::parse(copy.bytes());
        ASSERT_EQ(file.has_value(), size >= TextsAt);
        if (!file)
            continue;
        // The padding after the last entry may be missing.
        const bool textsWhole = size >= TextsAt + 32 + 42;
        EXPECT_EQ(file->find(WORD{6}, WORD{2}) != nullptr, textsWhole);
        EXPECT_EQ(file->find(u"kind", u"Logo") != nullptr, size >= LogoAt + 44 + 1);
        EXPECT_EQ(file->findText(17).has_value(), textsWhole);
        EXPECT_EQ(file->findText(19).has_value(), textsWhole);
    }
}

TEST(ResourceFileTest, DamagedEntryEndsTheFileAndADamagedTextItsBlock)
{
    struct Damage {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
        bool whole;
        bool text17;
        bool text19;
        std::size_t size = sizeof SmallFile;
    };
    const Damage damages[] = {
        {"data beyond the end", LogoAt, 0xFFFFFFFF, false, true, true},
        {"data one byte too long", LogoAt, 0x25, false, true, true},
        {"header beyond the end", LogoAt + 4, 0xFFFFFFF0, false, true, true},
        {"header shorter than its names", LogoAt + 4, 0x10, false, true, true},
        {"header of nothing", TextsAt + 4, 0, false, false, false},
        {"no empty entry at the start", 4, 0x21, false, false, false},
        {"name without an end", LogoAt + 24, 0x0041006F, false, true, true, LogoAt + 28},
        {"text longer than its block", TextsAt + 32 + 10, 0xD83DFFFF, true, true, false},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.what);
        Copy copy(damage.size);
        copy.put(damage.offset, damage.value);
        const auto file = ResourceFile::parse(copy.bytes());
        EXPECT_EQ(file && file->isWhole(), damage.whole);
        EXPECT_EQ(file && file->findText(17), damage.text17);
        EXPECT_EQ(file && file->findText(19), damage.text19);
        EXPECT_FALSE(file && file->findText(20));
    }
}

class ResourceCallsTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(setResources(copy_.bytes())); }
    void TearDown() override { setResources({}); }
    Copy copy_;
};

TEST_F(ResourceCallsTest, FindGivesTheEntryOrTheDocumentedError)
{
    const HRSRC byNumber = FindResourceW(nullptr, MAKEINTRESOURCEW(9), MAKEINTRESOURCEW(3));
    EXPECT_NE(byNumber, nullptr);
    EXPECT_EQ(FindResourceW(nullptr, u"#9", u"#3"), byNumber);
    EXPECT_EQ(SizeofResource(nullptr, byNumber), 0u);
    const HRSRC logo = FindResourceW(nullptr, u"logo", u"kind");
    ASSERT_EQ(SizeofResource(nullptr, logo), 1u);
    EXPECT_EQ(*static_cast<const std::byte*>(LoadResource(nullptr, logo)), std::byte{0xEE});

    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(9), MAKEINTRESOURCEW(5)), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_TYPE_NOT_FOUND);
    EXPECT_EQ(FindResourceW(nullptr, u"#99999", MAKEINTRESOURCEW(3)), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_NAME_NOT_FOUND);
    for (const UINT_PTR dead : {UINT_PTR{0}, UINT_PTR{4}, ~UINT_PTR{0}}) {
        SetLastError(0);
        EXPECT_EQ(LoadResource(nullptr, reinterpret_cast<HRSRC>(dead)), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    setResources({});
    EXPECT_EQ(FindResourceW(nullptr, u"logo", u"kind"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
}

TEST_F(ResourceCallsTest, TextIsCutToItsBufferAtAWholeCharacter)
{
    WCHAR buffer[5] = {u'#', u'#', u'#', u'#', u'#'};
    EXPECT_EQ(LoadStringW(nullptr, 19, buffer, 4), 3);
    EXPECT_EQ(std::u16string(buffer), u"\U0001F4BEc");
    EXPECT_EQ(LoadStringW(nullptr, 19, buffer, 2), 0) << "half a surrogate pair";
    EXPECT_EQ(LoadStringW(nullptr, 17, buffer, 2), 1);
    EXPECT_EQ(std::u16string(buffer), u"a");
    EXPECT_EQ(buffer[4], u'#');
    EXPECT_EQ(LoadStringW(nullptr, 17, buffer, 0), 0);
    for (const UINT absent : {16u, 18u, 31u, 300u, 0x10011u}) {
        EXPECT_EQ(LoadStringW(nullptr, absent, buffer, 5), 0) << absent;
        EXPECT_EQ(LoadStringW(nullptr, absent, nullptr, 0), 0) << absent;
    }
    // Without a buffer the result is the address of the text, whose length is before it.
    const auto* text = reinterpret_cast<const WCHAR*>(LoadStringW(nullptr, 17, nullptr, 0));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text[-1], 2);
    EXPECT_EQ(std::u16string(text, 2), u"ab");
}

TEST_F(ResourceCallsTest, ReadFromAnAddressEndsWithItsResource)
{
    const std::byte* first = copy_.bytes().data();
    EXPECT_EQ(resourceAt(first + TextsAt + 32).size(), 42u);
    EXPECT_EQ(resourceAt(first + TextsAt + 32 + 41).size(), 1u);
    EXPECT_TRUE(resourceAt(first + TextsAt + 32 + 42).empty()) << "padding";
    EXPECT_TRUE(resourceAt(first).empty());
    EXPECT_TRUE(resourceAt(first + copy_.bytes().size()).empty());
    EXPECT_TRUE(resourceAt(nullptr).empty());
    EXPECT_TRUE(resourceAt(&copy_).empty());
}

}  // namespace
}  // namespace platform::resource
