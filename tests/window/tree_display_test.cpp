// The report of a tree to a display: the items that changed since the display last asked.
#include "tree_control_fixture.h"

namespace {

using namespace platform::window;
using namespace platform::window::test;

class TreeDisplayTest : public TreeControlTest, public Display {
protected:
    TreeDisplayTest() : TreeControlTest(u"Plain", DefWindowProcW) { setDisplay(this); }
    ~TreeDisplayTest() override { setDisplay(nullptr); }

    void changed(HWND, Change change) override { announced += change == Change::Tree ? 1 : 0; }
    void textChanged(HWND, std::u16string_view) override {}

    void setImages(HTREEITEM item, int image, int selectedImage) const
    {
        TVITEMW record = {};
        record.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        record.hItem = item;
        record.iImage = image;
        record.iSelectedImage = selectedImage;
        send(TVM_SETITEMW, 0, &record);
    }

    int announced = 0;
};

TEST_F(TreeDisplayTest, ChangesAreAnnouncedOnceUntilTheyAreTaken)
{
    const HTREEITEM folder = add(nullptr);
    (void)takeTreeChanges(tree);
    announced = 0;
    const HTREEITEM items[] = {add(folder), add(folder), add(folder)};
    EXPECT_EQ(announced, 1);
    (void)takeTreeChanges(tree);
    for (const HTREEITEM item : items)
        for (const int image : {7, 8, 8})
            setImages(item, image, 0);
    EXPECT_EQ(announced, 2);
    EXPECT_EQ(takeTreeChanges(tree).updated.size(), 3U);
    setImages(items[0], 8, 0);  // no change
    remove(add(folder));
    const TreeChanges changes = takeTreeChanges(tree);
    EXPECT_TRUE(changes.updated.empty() && changes.removed.empty() && changes.inserted.empty());

    remove(nullptr);
    const TreeChanges fromTheStart = takeTreeChanges(tree, true);
    EXPECT_TRUE(fromTheStart.inserted.empty() && fromTheStart.removed.empty());
}

TEST_F(TreeDisplayTest, SelectedItemShowsItsSelectedImage)
{
    const HTREEITEM item = add(nullptr, nullptr, TVI_LAST, true);
    setImages(item, 3, 4);
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
