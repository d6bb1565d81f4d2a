// A display's mirror of a tree, kept up to date by the reported changes alone.
#include "tree_control_fixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace {

using namespace platform::window;
using namespace platform::window::test;

class Mirror {
public:
    explicit Mirror(HWND tree) : tree_(tree) {}

    void take()
    {
        changes = takeTreeChanges(tree_);
        for (const TreeRemoval& removal : changes.removed) {
            std::vector<HTREEITEM>& siblings = below_[removal.parent];
            const auto first = std::ranges::find(siblings, removal.first);
            const auto count = static_cast<std::ptrdiff_t>(removal.count);
            ASSERT_LE(count, siblings.end() - first);
            siblings.erase(first, first + count);
        }
        for (const TreeRange& range : changes.inserted) {
            ASSERT_TRUE(!range.parent || below_.contains(range.parent));
            std::vector<HTREEITEM>& siblings = below_[range.parent];
            const auto after = std::ranges::find(siblings, range.after);
            ASSERT_EQ(range.after == nullptr, after == siblings.end());
            siblings.insert(range.after ? after + 1 : siblings.begin(), range.items.begin(), range.items.end());
            for (HTREEITEM item : range.items)
                below_[item];
        }
        for (const TreeFold& fold : changes.folded)
            fold.expanded ? (void)expanded_.insert(fold.item) : (void)expanded_.erase(fold.item);
    }

    // Expects what lies below `parent` in the tree itself.
    void compare(HTREEITEM parent = nullptr)
    {
        const std::vector<HTREEITEM> children = treeItemsBelow(tree_, parent);
        ASSERT_EQ(below_[parent], children);
        for (const TreeItemState& state : readTreeItems(tree_, children)) {
            ASSERT_EQ(expanded_.contains(state.item), state.expanded);
            compare(state.item);
        }
    }

    TreeChanges changes;

private:
    HWND tree_;
    std::map<HTREEITEM, std::vector<HTREEITEM>> below_;
    std::set<HTREEITEM> expanded_;
};

class TreeDisplayTest : public TreeControlTest, public Display {
protected:
    TreeDisplayTest() : TreeControlTest(u"Plain", DefWindowProcW) { setDisplay(this); }
    ~TreeDisplayTest() override { setDisplay(nullptr); }

    void changed(HWND, Change change) override { announced += change == Change::Tree ? 1 : 0; }
    void textChanged(HWND, std::u16string_view) override {}

    void setImage(HTREEITEM item, int image) const
    {
        TVITEMW record = {};
        record.mask = TVIF_IMAGE;
        record.hItem = item;
        record.iImage = image;
        send(TVM_SETITEMW, 0, &record);
    }

    int announced = 0;
};

TEST_F(TreeDisplayTest, ManyChangesReachTheDisplayAsOneRange)
{
    constexpr std::size_t Many = 20000;
    HTREEITEM folder = add(nullptr);
    Mirror mirror(tree);
    mirror.take();
    announced = 0;
    std::vector<HTREEITEM> items;
    for (std::size_t i = 0; i < Many; i++)
        items.push_back(add(folder, nullptr, i % 2 == 0 ? TVI_LAST : TVI_FIRST));
    EXPECT_EQ(announced, 1);
    mirror.take();
    ASSERT_EQ(mirror.changes.inserted.size(), 1U);
    EXPECT_EQ(mirror.changes.inserted[0].items.size(), Many);
    mirror.compare();

    for (HTREEITEM item : items) {
        setImage(item, 7);
        setImage(item, 8);
        setImage(item, 8);
    }
    EXPECT_EQ(announced, 2);
    mirror.take();
    EXPECT_EQ(mirror.changes.updated.size(), Many);
    setImage(items[0], 8);  // no change
    EXPECT_EQ(announced, 2);

    for (HTREEITEM item : treeItemsBelow(tree, folder))
        remove(item);
    mirror.take();
    ASSERT_EQ(mirror.changes.removed.size(), 1U);
    EXPECT_EQ(mirror.changes.removed[0].count, Many);
    mirror.compare();

    // An item that was inserted and removed in between is not reported.
    remove(add(folder));
    mirror.take();
    EXPECT_TRUE(mirror.changes.removed.empty() && mirror.changes.inserted.empty());
}

TEST_F(TreeDisplayTest, MirrorEqualsTheTreeAfterAnyChanges)
{
    std::mt19937 random(20);
    const auto pick = [&random](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    Mirror mirror(tree);
    std::vector<HTREEITEM> items = {add(nullptr)};
    for (int round = 0; round < 150; round++) {
        for (std::size_t step = pick(30); step > 0; step--) {
            std::erase_if(items, [&](HTREEITEM item) {
                TreeItemState state;
                return !readTreeItem(tree, item, state);
            });
            HTREEITEM chosen = items.empty() ? nullptr : items[pick(items.size())];
            HTREEITEM const positions[] = {TVI_FIRST, TVI_LAST, TVI_SORT, chosen};
            switch (pick(6)) {
            case 0:
                remove(chosen ? chosen : add(nullptr));
                break;
            case 1:
                send(TVM_EXPAND, TVE_TOGGLE | (pick(2) == 0 ? TVE_COLLAPSERESET : 0), chosen);
                break;
            default:
                items.push_back(add(pick(5) == 0 ? nullptr : chosen, nullptr, positions[pick(4)]));
                break;
            }
        }
        mirror.take();
        ASSERT_NO_FATAL_FAILURE(mirror.compare()) << "round " << round;
    }
    remove(nullptr);
    const TreeChanges fromTheStart = takeTreeChanges(tree, true);
    EXPECT_TRUE(fromTheStart.inserted.empty() && fromTheStart.removed.empty());
}

TEST_F(TreeDisplayTest, SelectedItemShowsItsSelectedImage)
{
    HTREEITEM item = add(nullptr);
    TVITEMW record = {};
    record.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_CHILDREN;
    record.hItem = item;
    record.iImage = 3;
    record.iSelectedImage = 4;
    record.cChildren = 1;
    send(TVM_SETITEMW, 0, &record);
    TreeItemState state;
    ASSERT_TRUE(readTreeItem(tree, item, state));
    EXPECT_EQ(state.image, 3);
    EXPECT_TRUE(state.hasButton && !state.hasChildren && !state.selected);
    (void)takeTreeChanges(tree);
    select(item);
    const TreeChanges changes = takeTreeChanges(tree);
    EXPECT_EQ(changes.selected, item);
    EXPECT_EQ(changes.toShow, item);
    EXPECT_EQ(changes.updated, std::vector{item});
    ASSERT_TRUE(readTreeItem(tree, item, state));
    EXPECT_EQ(state.image, 4);
}

}  // namespace
