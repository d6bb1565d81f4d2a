// tree_control_fixture.h - a tree view in a window of the test's own thread.
#pragma once

#include "test_user.h"
#include "tree_control/tree_display.h"

#include "ce/tree_view.h"

#include <gtest/gtest.h>

namespace platform::window::test {

class TreeControlTest : public testing::Test {
protected:
    TreeControlTest(const WCHAR* parentClass, WNDPROC parentProcedure)
        : parent(makeWindow(windowClass(parentClass, parentProcedure))),
          tree(CreateWindowExW(0, u"SysTreeView32", u"", WS_CHILD | WS_VISIBLE, 5, 40, 200, 160, parent,
                               reinterpret_cast<HMENU>(INT_PTR{102}), nullptr, nullptr))
    {
    }
    ~TreeControlTest() override { DestroyWindow(parent); }

    LRESULT send(UINT message, WPARAM wParam = 0, const void* lParam = nullptr) const
    {
        return test::send(tree, message, wParam, lParam);
    }
    HTREEITEM add(HTREEITEM above, const WCHAR* text = nullptr, HTREEITEM after = TVI_LAST, bool button = false) const
    {
        TVINSERTSTRUCTW insert = {};
        insert.hParent = above;
        insert.hInsertAfter = after;
        insert.item.mask = (text ? TVIF_TEXT : 0) | (button ? TVIF_CHILDREN : 0);
        insert.item.pszText = const_cast<WCHAR*>(text);
        insert.item.cChildren = 1;
        return reinterpret_cast<HTREEITEM>(send(TVM_INSERTITEMW, 0, &insert));
    }
    void remove(HTREEITEM item) const { send(TVM_DELETEITEM, 0, item); }
    void select(HTREEITEM item) const { send(TVM_SELECTITEM, TVGN_CARET, item); }

    HWND parent;
    HWND tree;
};

}  // namespace platform::window::test
