// directory_walker_test.cpp - what a walk sees, in which order, and what stops it.

#include "engine_fixture.h"

#include "engine/directory_walker.h"
#include "engine/paths_too_long.h"

#include "ce/file.h"

#include <algorithm>

namespace {

struct Seen {
    std::vector<std::u16string> paths;
    std::u16string stopAt;
};

BOOL collect(const WCHAR* name, const WCHAR* folder, DWORD /*attributes*/, UINT_PTR context)
{
    auto& seen = *reinterpret_cast<Seen*>(context);
    seen.paths.push_back(std::u16string(folder) + name);
    return seen.paths.back() != seen.stopAt;
}

DWORD walk(Seen& seen, const WCHAR* root, BOOL recurse, BOOL foldersOnly, const WCHAR* pattern = nullptr)
{
    return WalkDirectory(root, pattern, recurse, foldersOnly, collect, reinterpret_cast<UINT_PTR>(&seen));
}

class WalkerTest : public EngineTest {
protected:
    WalkerTest()
    {
        for (const char* name : {"w/one", "w/two", "w/three.txt", "w/sub/four", "w/sub/five.txt"})
            write(name, "");
    }
};

}  // namespace

TEST_F(WalkerTest, CountsAndContentsBeforeTheFolder)
{
    Seen all;
    EXPECT_EQ(walk(all, u"\\w\\", TRUE, FALSE), 6U);
    const auto at = [&](const WCHAR* path) { return std::find(all.paths.begin(), all.paths.end(), path); };
    EXPECT_LT(at(u"\\w\\sub\\four"), at(u"\\w\\sub"));
    EXPECT_NE(at(u"\\w\\sub"), all.paths.end());

    Seen folders;
    EXPECT_EQ(walk(folders, u"\\w\\", TRUE, TRUE), 1U);
    Seen level;
    EXPECT_EQ(walk(level, u"\\w\\", FALSE, FALSE), 4U);
    EXPECT_EQ(WalkDirectory(u"\\w\\", nullptr, TRUE, FALSE, nullptr, 0), 6U);
    Seen nothing;
    EXPECT_EQ(walk(nothing, u"\\w\\sub\\none\\", TRUE, FALSE), 0U);
}

TEST_F(WalkerTest, PatternHoldsForTheFirstLevelAndItsFolders)
{
    Seen texts;
    EXPECT_EQ(walk(texts, u"\\w\\", TRUE, FALSE, u"*.TXT"), 1U) << "a folder that doesn't match isn't looked into";
    Seen subfolder;
    EXPECT_EQ(walk(subfolder, u"\\w\\", TRUE, FALSE, u"s*"), 3U) << "below it the pattern is over";
}

TEST_F(WalkerTest, FolderWithALeadingPointIsSeenButNotEntered)
{
    write("w/.hidden/inside", "");
    Seen seen;
    EXPECT_EQ(walk(seen, u"\\w\\", TRUE, FALSE), 7U);
}

TEST_F(WalkerTest, StopEndsItsLevelAlone)
{
    write("w/sub/deep/a", "");
    write("w/sub/deep/b", "");
    Seen seen;
    seen.stopAt = u"\\w\\sub\\deep\\a";
    Seen other;
    other.stopAt = u"\\w\\sub\\deep\\b";
    const DWORD one = walk(seen, u"\\w\\", TRUE, FALSE);
    const DWORD two = walk(other, u"\\w\\", TRUE, FALSE);
    // Whichever of the two came first ended that level of two; everything above went on.
    EXPECT_EQ(one + two, 8U + 9U);
}

TEST_F(WalkerTest, PathThatDoesNotFitIsCountedAndNamedNotLost)
{
    const std::string level(100, 'd');
    write(level + "/" + level + "/" + level + "/file", "deep");
    write(level + "/" + std::string(255, 'n'), "long");
    gPathsTooLong = {};
    Seen seen;
    const DWORD walked = walk(seen, u"\\", TRUE, FALSE);
    EXPECT_EQ(walked, seen.paths.size());
    WCHAR path[MAX_PATH];
    DWORD fit = 0;
    for (const std::u16string& entry : seen.paths)
        fit += JoinPath(path, u"", entry.c_str()) ? 1 : 0;
    EXPECT_EQ(seen.paths.size() - fit, 2U);
    EXPECT_EQ(gPathsTooLong.count, 1U) << "the folder that couldn't be entered";
    EXPECT_EQ(std::u16string(gPathsTooLong.first).substr(0, 101), u"\\" + std::u16string(100, 'd'));
}
