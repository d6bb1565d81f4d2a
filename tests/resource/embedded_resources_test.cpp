// The resources that are built into the program. Their content comes from res/quillbox.rc. The suites of the dialogs
// and the program test it.
#include "resource/resource_file.h"
#include "resources/accessible_names.h"
#include "resources/embedded_resources.h"

#include "ce/resource.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(EmbeddedResourcesTest, FileIsWholeAndItsTextsAndPicturesAreFound)
{
    ASSERT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
    EXPECT_TRUE(platform::resource::currentResources()->isWhole());
    for (const auto& [id, text] : {std::pair(114U, u"File: %s"), std::pair(144U, u"No Item to restore !")}) {
        WCHAR buffer[260] = {};
        EXPECT_GT(LoadStringW(nullptr, id, buffer, 260), 0);
        EXPECT_EQ(std::u16string(buffer), text);
    }
    for (const auto& [type, name] : {std::pair(2U, 101U), {2U, 106U}, {2U, 107U}, {14U, 109U}})
        EXPECT_NE(FindResourceW(nullptr, MAKEINTRESOURCEW(name), MAKEINTRESOURCEW(type)), nullptr) << name;
    platform::resource::setResources({});
}

TEST(EmbeddedResourcesTest, EachPictureOfTheTreeAndTheToolbarHasOneName)
{
    std::set<std::pair<int, int>> unnamed;
    for (int cell = 0; cell < 18; ++cell)
        unnamed.emplace(101, cell);
    for (int cell = 0; cell < 5; ++cell)
        unnamed.emplace(106, cell);
    for (const auto& [bitmap, cell, text, mark] : quillbox::AccessibleNames) {
        EXPECT_EQ(unnamed.erase({bitmap, cell}), 1U) << bitmap << ' ' << cell;
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(quillbox::accessibleName(bitmap, cell), text);
        EXPECT_EQ(quillbox::shownMark(bitmap, cell), mark);
    }
    EXPECT_TRUE(unnamed.empty());
}

}  // namespace
