// The calls that read resources, with a file written by hand.

#include "resource/resource_file.h"
#include "resources/accessible_names.h"
#include "written_bytes.h"

#include "ce/resource.h"

#include <gtest/gtest.h>

#include <set>
#include <span>
#include <tuple>

namespace platform::resource {
namespace {

using namespace std::string_literals;

// Returns an entry, padded to a multiple of 4 bytes. The type and the name together must take a multiple of 4 bytes.
// The format allows the last entry of a file to have no padding.
std::string entry(const std::string& type, const std::string& name, const std::string& data)
{
    const std::string padding((4 - data.size() % 4) % 4, '\0');
    const auto headBytes = static_cast<std::uint32_t>(24 + type.size() + name.size());
    return numberBytes(static_cast<std::uint32_t>(data.size())) + numberBytes(headBytes) + type + name +
           std::string(16, '\0') + data + padding;
}

std::string numbered(std::uint16_t id)
{
    return numberBytes(0xFFFF + 0x10000U * id);
}

// The file has four entries: the empty entry; the texts 16 to 31, with "ab" as 17 and "\U0001F4BEc" as 19; "Logo" of
// type "kind" with one byte; number 9 of type 3 without content.
const std::string SmallFile =
    entry(numbered(0), numbered(0), "") +
    entry(numbered(6), numbered(2), utf16(u"\0\2ab\0\3\U0001F4BEc"s) + std::string(24, '\0')) +
    entry(utf16(u"kind\0"s), utf16(u"Logo\0"s), "\xEE") + entry(numbered(3), numbered(9), "");
constexpr std::size_t TextsAt = 32;

class ResourceCallsTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(setResources(std::as_bytes(std::span(SmallFile)))); }
    void TearDown() override { setResources({}); }
};

TEST_F(ResourceCallsTest, FindGivesTheEntryOrTheDocumentedError)
{
    const HRSRC byNumber = FindResourceW(nullptr, MAKEINTRESOURCEW(9), MAKEINTRESOURCEW(3));
    EXPECT_NE(byNumber, nullptr);
    EXPECT_EQ(FindResourceW(nullptr, u"#9", u"#3"), byNumber);
    EXPECT_EQ(SizeofResource(nullptr, byNumber), 0u);
    const HRSRC logo = FindResourceW(nullptr, u"lOGO", u"KIND");
    ASSERT_EQ(SizeofResource(nullptr, logo), 1u) << "without the padding";
    EXPECT_EQ(*static_cast<const std::byte*>(LoadResource(nullptr, logo)), std::byte{0xEE});

    const auto expectError = [](DWORD error, const WCHAR* name, const WCHAR* type) {
        EXPECT_EQ(FindResourceW(nullptr, name, type), nullptr);
        EXPECT_EQ(GetLastError(), error);
    };
    expectError(ERROR_RESOURCE_TYPE_NOT_FOUND, MAKEINTRESOURCEW(9), MAKEINTRESOURCEW(5));
    expectError(ERROR_RESOURCE_NAME_NOT_FOUND, MAKEINTRESOURCEW(8), MAKEINTRESOURCEW(3));
    expectError(ERROR_RESOURCE_NAME_NOT_FOUND, u"#99999", MAKEINTRESOURCEW(3));
    expectError(ERROR_RESOURCE_NAME_NOT_FOUND, u"9", MAKEINTRESOURCEW(3));
    for (const UINT_PTR dead : {UINT_PTR{0}, UINT_PTR{4}, ~UINT_PTR{0}}) {
        SetLastError(0);
        EXPECT_EQ(LoadResource(nullptr, reinterpret_cast<HRSRC>(dead)), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    setResources({});
    expectError(ERROR_RESOURCE_DATA_NOT_FOUND, u"logo", u"kind");
}

TEST_F(ResourceCallsTest, TextIsCutToItsBufferAtAWholeCharacter)
{
    const std::tuple<UINT, int, std::u16string> cases[] = {
        {19, 4, u"\U0001F4BEc"}, {19, 2, u""},     {17, 2, u"a"}, {16, 4, u""}, {18, 4, u""}, {31, 4, u""},
        {300, 4, u""},           {0x10011, 4, u""}};
    for (const auto& [id, characters, text] : cases) {
        SCOPED_TRACE(id);
        std::u16string buffer(5, u'#');
        EXPECT_EQ(LoadStringW(nullptr, id, buffer.data(), characters), static_cast<int>(text.size()));
        EXPECT_EQ(buffer[4], u'#');
        if (!text.empty()) {
            EXPECT_EQ(std::u16string(buffer.c_str()), text);
        }
    }
    // Without a buffer the result is the address of the text. The unit before this address contains the text's length.
    EXPECT_EQ(LoadStringW(nullptr, 18, nullptr, 0), 0);
    const auto* text = reinterpret_cast<const WCHAR*>(LoadStringW(nullptr, 17, nullptr, 0));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::u16string(text - 1, 3), u"\2ab");
}

TEST_F(ResourceCallsTest, ReadFromAnAddressEndsWithItsResource)
{
    const char* first = SmallFile.data();
    EXPECT_EQ(resourceAt(first + TextsAt + 32 + 41).size(), 1u);
    for (const char* outside : {first, first + TextsAt + 32 + 42, first + SmallFile.size()})
        EXPECT_TRUE(resourceAt(outside).empty());
}

// The pictures of the tree and of the toolbar.
TEST(AccessibleNamesTest, EachPictureHasOneName)
{
    std::set<std::pair<int, int>> unnamed;
    for (const auto& [bitmap, cells] : {std::pair(101, 18), std::pair(106, 5)}) {
        for (int cell = 0; cell < cells; ++cell)
            unnamed.emplace(bitmap, cell);
    }
    for (const quillbox::AccessibleName& known : quillbox::AccessibleNames) {
        EXPECT_EQ(unnamed.erase({known.bitmap, known.cell}), 1U) << known.bitmap << ' ' << known.cell;
        EXPECT_EQ(quillbox::accessibleName(known.bitmap, known.cell), known.text);
        EXPECT_EQ(quillbox::shownMark(known.bitmap, known.cell), known.mark);
    }
    EXPECT_TRUE(unnamed.empty());
}

}  // namespace
}  // namespace platform::resource
