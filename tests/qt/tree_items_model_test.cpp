// tree_items_model_test.cpp - the toolkit's model of a tree against the tree itself.

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
    TreeItemsModelTest()
    {
        WNDCLASSW frame = {};
        frame.lpfnWndProc = DefWindowProcW;
        frame.lpszClassName = u"ModelTestFrame";
        RegisterClassW(&frame);
        parent_ =
            CreateWindowExW(0, u"ModelTestFrame", u"", WS_VISIBLE, 0, 0, 300, 300, nullptr, nullptr, nullptr, nullptr);
        tree_ = CreateWindowExW(0, u"SysTreeView32", u"", WS_CHILD | WS_VISIBLE, 0, 0, 300, 300, parent_, nullptr,
                                nullptr, nullptr);
        model_.emplace(
            tree_, [](HTREEITEM) {}, nullptr);
    }
    ~TreeItemsModelTest() override
    {
        model_.reset();
        DestroyWindow(parent_);
    }

    HTREEITEM add(HTREEITEM above, const std::u16string& text, HTREEITEM after = TVI_LAST) const
    {
        std::u16string copy = text;
        TVINSERTSTRUCTW insert = {};
        insert.hParent = above;
        insert.hInsertAfter = after;
        insert.item.mask = TVIF_TEXT;
        insert.item.pszText = copy.data();
        insert.item.cchTextMax = static_cast<int>(copy.size());
        return reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    }
    void remove(HTREEITEM item) const { SendMessageW(tree_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)); }
    void take() { model_->take(window::takeTreeChanges(tree_, !std::exchange(begun_, true))); }

    // All items from `above` on, in the order of their rows.
    void compare(const QModelIndex& above, std::vector<HTREEITEM>& all) const
    {
        const std::vector<HTREEITEM> children = window::treeItemsBelow(tree_, model_->itemAt(above));
        ASSERT_EQ(model_->rowCount(above), static_cast<int>(children.size()));
        for (std::size_t row = 0; row < children.size(); ++row) {
            const QModelIndex index = model_->index(static_cast<int>(row), 0, above);
            ASSERT_EQ(model_->itemAt(index), children[row]);
            ASSERT_EQ(model_->indexOf(children[row]), index);
            ASSERT_EQ(index.parent(), above);
            all.push_back(children[row]);
            compare(index, all);
        }
    }

    HWND parent_ = nullptr;
    HWND tree_ = nullptr;
    std::optional<TreeItemsModel> model_;
    bool begun_ = false;
};

TEST_F(TreeItemsModelTest, RowsStayThoseOfTheTreeThroughAnyChanges)
{
    const QAbstractItemModelTester tester(&*model_, QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::mt19937 random(7);
    std::vector<HTREEITEM> all;
    for (int round = 0; round < 150; ++round) {
        for (auto step = random() % 12; step > 0; --step) {
            const HTREEITEM some = all.empty() ? TVI_ROOT : all[random() % all.size()];
            if (all.size() > 5 && random() % 4 == 0) {
                remove(some);
                all.clear();  // what lay below it went with it
            } else {
                add(random() % 3 == 0 ? TVI_ROOT : some, u"item", random() % 2 == 0 ? TVI_FIRST : TVI_LAST);
            }
        }
        take();
        all.clear();
        compare({}, all);
        ASSERT_FALSE(HasFatalFailure());
    }
    remove(TVI_ROOT);
    take();
    EXPECT_EQ(model_->rowCount({}), 0);
}

TEST_F(TreeItemsModelTest, LargeFolderComesAndGoesAsOneChange)
{
    const HTREEITEM folder = add(TVI_ROOT, u"folder");
    take();
    QSignalSpy inserted(&*model_, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&*model_, &QAbstractItemModel::rowsRemoved);
    for (int i = 0; i < 20000; ++i)
        add(folder, u"file");
    take();
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(model_->rowCount(model_->indexOf(folder)), 20000);
    for (HTREEITEM child : window::treeItemsBelow(tree_, folder))
        remove(child);
    take();
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(model_->rowCount(model_->indexOf(folder)), 0);
}

TEST_F(TreeItemsModelTest, NameWithALineBreakStaysOneLine)
{
    add(TVI_ROOT, u"one\ntwo");
    take();
    const QModelIndex index = model_->index(0, 0, {});
    EXPECT_EQ(index.data().toString(), QString::fromUtf16(u"one\u240atwo"));
    EXPECT_FALSE(index.data(Qt::CheckStateRole).isValid());
}

}  // namespace
