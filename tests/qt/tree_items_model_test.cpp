// tree_items_model_test.cpp - the toolkit's model of a tree compared with the tree of the window core.
#include "tree_items_model.h"

#include "ce/tree_view.h"
#include "ce/window.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <random>

namespace {

using platform::qt::TreeItemsModel;
namespace window = platform::window;

class TreeItemsModelTest : public testing::Test {
protected:
    ~TreeItemsModelTest() override { DestroyWindow(tree_); }

    HTREEITEM add(HTREEITEM above, const std::string& name, HTREEITEM after = TVI_LAST) const
    {
        std::u16string text(name.begin(), name.end());
        TVINSERTSTRUCTW insert = {};
        insert.hParent = above;
        insert.hInsertAfter = after;
        insert.item.mask = TVIF_TEXT;
        insert.item.pszText = text.data();
        return reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    }
    void remove(HTREEITEM item) const { SendMessageW(tree_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)); }
    void take() { model_.apply(window::takeTreeChanges(tree_, !std::exchange(begun_, true))); }

    // Adds all items below `above` to `all`, in the order of their rows.
    void compare(const QModelIndex& above, std::vector<HTREEITEM>& all) const
    {
        const std::vector<HTREEITEM> children = window::treeItemsBelow(tree_, model_.itemAt(above));
        ASSERT_EQ(model_.rowCount(above), std::ssize(children));
        for (int row = 0; HTREEITEM child : children) {
            const QModelIndex index = model_.index(row++, 0, above);
            ASSERT_EQ(model_.itemAt(index), child);
            ASSERT_EQ(model_.indexOf(child), index);
            ASSERT_EQ(index.parent(), above);
            all.push_back(child);
            compare(index, all);
        }
    }

    HWND tree_ =
        CreateWindowExW(0, u"SysTreeView32", u"", WS_VISIBLE, 0, 0, 300, 300, nullptr, nullptr, nullptr, nullptr);
    TreeItemsModel model_{tree_, [](HTREEITEM) {}, nullptr};
    bool begun_ = false;
};

TEST_F(TreeItemsModelTest, RowsAreThoseOfTheTreeAfterAnyChanges)
{
    const QAbstractItemModelTester tester(&model_, QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::mt19937 random(7);
    std::vector<HTREEITEM> all;
    for (int round = 0; round < 150; ++round) {
        for (auto step = random() % 12; step > 0; --step) {
            const HTREEITEM some = all.empty() ? TVI_ROOT : all[random() % all.size()];
            if (all.size() > 5 && random() % 4 == 0) {
                remove(some);
                all.clear();  // the items below the deleted item are gone, too
            } else {
                const HTREEITEM positions[] = {TVI_FIRST, TVI_LAST, TVI_SORT, some};
                add(random() % 3 == 0 ? TVI_ROOT : some, std::to_string(random()), positions[random() % 4]);
            }
        }
        take();
        all.clear();
        compare({}, all);
        ASSERT_FALSE(HasFatalFailure());
    }
    remove(TVI_ROOT);
    take();
    EXPECT_EQ(model_.rowCount({}), 0);
}

TEST_F(TreeItemsModelTest, ManyItemsAreInsertedAndRemovedAsOneChange)
{
    const HTREEITEM folder = add(TVI_ROOT, "one\ntwo");
    take();
    const QModelIndex index = model_.indexOf(folder);
    EXPECT_EQ(index.data().toString(), QString::fromUtf16(u"one\u240atwo"));
    EXPECT_FALSE(index.data(Qt::CheckStateRole).isValid());
    QSignalSpy inserted(&model_, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model_, &QAbstractItemModel::rowsRemoved);
    for (int i = 0; i < 20000; ++i)
        add(folder, "file", i % 2 == 0 ? TVI_LAST : TVI_FIRST);
    take();
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(model_.rowCount(index), 20000);
    for (HTREEITEM child : window::treeItemsBelow(tree_, folder))
        remove(child);
    take();
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(model_.rowCount(model_.indexOf(folder)), 0);
}

}  // namespace
