// directory_walker_test.cpp - what a walk visits, in which order, and what stops it.

#include "engine_fixture.h"

#include "engine/directory_walker.h"
#include "engine/paths_too_long.h"

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

TEST_F(WalkerTest, EachEntryIsSeenOnceAndContentsBeforeTheirFolder)
{
    write("w/.hidden/inside", "");
    struct Case {
        const WCHAR* root;
        BOOL recurse;
        BOOL foldersOnly;
        const WCHAR* pattern;
        DWORD count;
    };
    const Case cases[] = {
        {u"\\w\\", TRUE, FALSE, nullptr, 7},  // a folder whose name begins with a point isn't entered
        {u"\\w\\", TRUE, TRUE, nullptr, 2},
        {u"\\w\\", FALSE, FALSE, nullptr, 5},
        {u"\\w\\none\\", TRUE, FALSE, nullptr, 0},
        {u"\\w\\", TRUE, FALSE, u"*.TXT", 1},  // a folder that doesn't match isn't entered
        {u"\\w\\", TRUE, FALSE, u"s*", 3},     // in a folder that does, the pattern no longer applies
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        Seen seen;
        EXPECT_EQ(walk(seen, each.root, each.recurse, each.foldersOnly, each.pattern), each.count);
        EXPECT_EQ(seen.paths.size(), each.count);
        EXPECT_EQ(WalkDirectory(each.root, each.pattern, each.recurse, each.foldersOnly, nullptr, 0), each.count);
    }
    Seen all;
    walk(all, u"\\w\\", TRUE, FALSE);
    const auto at = [&](const WCHAR* path) { return std::ranges::find(all.paths, path); };
    EXPECT_LT(at(u"\\w\\sub\\four"), at(u"\\w\\sub"));
    EXPECT_NE(at(u"\\w\\sub"), all.paths.end());
}

TEST_F(WalkerTest, StopEndsOnlyItsLevel)
{
    write("w/sub/deep/a", "");
    write("w/sub/deep/b", "");
    Seen seen;
    seen.stopAt = u"\\w\\sub\\deep\\a";
    Seen other;
    other.stopAt = u"\\w\\sub\\deep\\b";
    const DWORD one = walk(seen, u"\\w\\", TRUE, FALSE);
    const DWORD two = walk(other, u"\\w\\", TRUE, FALSE);
    // The walk that stopped at the first of the two missed the second. The other walk missed nothing.
    EXPECT_EQ(one + two, 8U + 9U);
}

TEST_F(WalkerTest, PathThatDoesNotFitIsCountedAndNamed)
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
