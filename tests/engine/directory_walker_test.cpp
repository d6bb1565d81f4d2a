// directory_walker_test.cpp - what a walk visits, in which order, and what stops it.

#include "engine_fixture.h"

#include "engine/directory_walker.h"

#include <algorithm>

namespace {

struct SeenPaths {
    std::vector<std::u16string> paths;
    std::u16string stopAt;
};

BOOL collect(const WCHAR* name, const WCHAR* folder, DWORD /*attributes*/, UINT_PTR context)
{
    auto& seen = *reinterpret_cast<SeenPaths*>(context);
    seen.paths.push_back(std::u16string(folder) + name);
    return seen.paths.back() != seen.stopAt;
}

DWORD walk(SeenPaths& seen, const WCHAR* root, BOOL recurse, BOOL foldersOnly, const WCHAR* pattern = nullptr)
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

TEST_F(WalkerTest, EachEntryIsSeenOnceAndContentsBeforeTheirFolder)
{
    write("w/.hidden/inside", "");
    const std::tuple<const WCHAR*, BOOL, BOOL, const WCHAR*, DWORD> cases[] = {
        {u"\\w\\", TRUE, FALSE, nullptr, 7},  // a folder whose name begins with a point isn't entered
        {u"\\w\\", TRUE, TRUE, nullptr, 2},
        {u"\\w\\", FALSE, FALSE, nullptr, 5},
        {u"\\w\\none\\", TRUE, FALSE, nullptr, 0},
        {u"\\w\\", TRUE, FALSE, u"*.TXT", 1},  // a folder that doesn't match isn't entered
        {u"\\w\\", TRUE, FALSE, u"s*", 3},     // in a folder that matches, the pattern no longer applies
    };
    for (const auto& [root, recurse, foldersOnly, pattern, count] : cases) {
        SCOPED_TRACE(testing::Message() << recurse << foldersOnly << ' ' << count);
        SeenPaths seen;
        EXPECT_EQ(walk(seen, root, recurse, foldersOnly, pattern), count);
        EXPECT_EQ(seen.paths.size(), count);
        EXPECT_EQ(WalkDirectory(root, pattern, recurse, foldersOnly, nullptr, 0), count);
    }
    SeenPaths all;
    walk(all, u"\\w\\", TRUE, FALSE);
    const auto at = [&](const WCHAR* path) { return std::ranges::find(all.paths, path); };
    EXPECT_LT(at(u"\\w\\sub\\four"), at(u"\\w\\sub"));
    EXPECT_NE(at(u"\\w\\sub"), all.paths.end());
}

TEST_F(WalkerTest, StopEndsTheWalkOfItsFolderOnlyAndNotOfTheFoldersAbove)
{
    write("w/sub/deep/a", "");
    write("w/sub/deep/b", "");
    DWORD walked = 0;
    for (const WCHAR* stop : {u"\\w\\sub\\deep\\a", u"\\w\\sub\\deep\\b"}) {
        SeenPaths seen = {{}, stop};
        walked += walk(seen, u"\\w\\", TRUE, FALSE);
    }
    // The walk that stopped at deep\a didn't visit deep\b. The walk that stopped at deep\b had visited everything.
    EXPECT_EQ(walked, 8U + 9U);
}
