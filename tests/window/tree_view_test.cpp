#include "test_user.h"
#include "tree_control/tree_display.h"
#include "window/input.h"

#include "ce/tree_view.h"

#include <gtest/gtest.h>

namespace {

using namespace platform::window;
using namespace platform::window::test;

using Lines = std::vector<std::string>;

// A tree in a window that writes down what it is told: "changed a>b mouse".
class TreeViewTest : public testing::Test {
protected:
    TreeViewTest()
    {
        running = this;
        parent = makeWindow(windowClass(u"TreeParent", procedure));
        tree = CreateWindowExW(0, u"SysTreeView32", u"", WS_CHILD | WS_VISIBLE, 5, 40, 200, 160, parent,
                               reinterpret_cast<HMENU>(INT_PTR{102}), nullptr, nullptr);
    }
    ~TreeViewTest() override { DestroyWindow(parent); }

    LRESULT send(UINT message, WPARAM wParam = 0, HTREEITEM item = nullptr) const
    {
        return SendMessageW(tree, message, wParam, reinterpret_cast<LPARAM>(item));
    }
    HTREEITEM get(WPARAM relation, HTREEITEM item = nullptr) const
    {
        return reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, relation, item));
    }
    HTREEITEM add(HTREEITEM above, const WCHAR* text, HTREEITEM after = TVI_LAST, bool button = false) const
    {
        TVINSERTSTRUCTW insert = {};
        insert.hParent = above;
        insert.hInsertAfter = after;
        insert.item.mask = TVIF_TEXT | (button ? TVIF_CHILDREN : 0);
        insert.item.pszText = const_cast<WCHAR*>(text);
        insert.item.cChildren = 1;
        return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    }
    std::u16string text(HTREEITEM item) const
    {
        WCHAR text[20] = {};
        TVITEMW record = {};
        record.mask = TVIF_TEXT;
        record.hItem = item;
        record.pszText = text;
        record.cchTextMax = 20;
        return SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record)) ? text : u"-";
    }
    std::string name(HTREEITEM item) const
    {
        const std::u16string found = text(item);
        return {found.begin(), found.end()};
    }
    UINT state(HTREEITEM item) const
    {
        TVITEMW record = {};
        record.mask = TVIF_STATE;
        record.hItem = item;
        SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record));
        return record.state;
    }
    bool isExpanded(HTREEITEM item) const { return (state(item) & TVIS_EXPANDED) != 0; }
    std::string children(HTREEITEM item) const
    {
        std::string names;
        for (HTREEITEM at = get(TVGN_CHILD, item); at; at = get(TVGN_NEXT, at))
            names += name(at);
        return names;
    }
    void click(HTREEITEM item, TreePart part = TreePart::Label, UINT message = InputClick) const
    {
        SendMessageW(tree, message, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(part));
    }
    void key(WORD key) const { SendMessageW(tree, WM_KEYDOWN, key, 0); }
    void type(char16_t letter) const { SendMessageW(tree, WM_CHAR, letter, 0); }
    std::string selected() const { return name(get(TVGN_CARET)); }
    HTREEITEM underPointer() const
    {
        const DWORD position = GetMessagePos();
        TVHITTESTINFO hit = {};
        hit.pt = {static_cast<SHORT>(LOWORD(position)), static_cast<SHORT>(HIWORD(position))};
        ScreenToClient(tree, &hit.pt);
        auto* item = reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
        EXPECT_EQ(item, hit.hItem);
        flags = hit.flags;
        return item;
    }
    Lines told() { return std::exchange(lines, {}); }

    HWND parent = nullptr;
    HWND tree = nullptr;
    mutable UINT flags = 0;
    std::function<LRESULT(const NMTREEVIEWW&)> answer = [](const NMTREEVIEWW&) { return 0; };

private:
    static LRESULT procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message != WM_NOTIFY)
            return DefWindowProcW(window, message, wParam, lParam);
        EXPECT_EQ(wParam, 102U);
        const auto& change = *reinterpret_cast<const NMTREEVIEWW*>(lParam);
        running->note(change);
        const auto current = running->answer;  // it may put another one in its place
        return current(change);
    }

    void note(const NMTREEVIEWW& change)
    {
        const char* const causes[] = {"", " mouse", " key"};
        const auto direction = [&change] { return change.action == TVE_COLLAPSE ? " shut" : " open"; };
        switch (change.hdr.code) {
        case NM_CLICK:
            lines.push_back("click " + name(underPointer()));
            break;
        case NM_DBLCLK:
            lines.emplace_back("double click");
            break;
        case NM_RETURN:
            lines.emplace_back("return");
            break;
        case TVN_SELCHANGINGW:
            lines.push_back("changing " + name(change.itemOld.hItem) + ">" + name(change.itemNew.hItem));
            break;
        case TVN_SELCHANGEDW:
            lines.push_back("changed " + name(change.itemOld.hItem) + ">" + name(change.itemNew.hItem) +
                            causes[change.action]);
            break;
        case TVN_ITEMEXPANDINGW:
            lines.push_back("expanding " + name(change.itemNew.hItem) + direction());
            break;
        case TVN_ITEMEXPANDEDW:
            lines.push_back("expanded " + name(change.itemNew.hItem) + direction());
            break;
        case TVN_DELETEITEMW:
            lines.push_back("delete " + name(change.itemOld.hItem));
            break;
        default:
            break;
        }
    }

    static TreeViewTest* running;
    Lines lines;
};
TreeViewTest* TreeViewTest::running = nullptr;

TEST_F(TreeViewTest, ClickIsToldBeforeTheSelectionMoves)
{
    HTREEITEM a = add(nullptr, u"a");
    HTREEITEM b = add(nullptr, u"b");
    click(a);
    EXPECT_EQ(told(), (Lines{"click a", "changing ->a", "changed ->a mouse"}));
    click(b, TreePart::Icon);
    EXPECT_EQ(told(), (Lines{"click b", "changing a>b", "changed a>b mouse"}));
    click(b);
    EXPECT_EQ(told(), Lines{"click b"});
    click(a, TreePart::Right);
    EXPECT_EQ(flags, TVHT_ONITEMRIGHT);
    click(nullptr, TreePart::Label);
    EXPECT_EQ(told(), (Lines{"click a", "click -"}));
    EXPECT_EQ(selected(), "b");

    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == TVN_SELCHANGINGW ? 1 : 0; };
    click(a);
    EXPECT_EQ(told(), (Lines{"click a", "changing b>a"}));
    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == NM_CLICK ? 1 : 0; };
    click(a);
    click(a, TreePart::Label, InputDoubleClick);
    EXPECT_EQ(told(), (Lines{"click a", "click a"}));
    EXPECT_EQ(selected(), "b");

    answer = [](const NMTREEVIEWW&) { return 0; };
    click(a, TreePart::Label, InputDoubleClick);  // two quick clicks, of which the first one met b
    EXPECT_EQ(told(), (Lines{"click a", "changing b>a", "changed b>a mouse", "double click"}));
}

TEST_F(TreeViewTest, PointOfAClickFindsTheItemHoweverFarItIsScrolledOrIndented)
{
    HTREEITEM item = nullptr;
    for (int i = 0; i < 3000; i++)
        item = add(nullptr, u"x");
    HTREEITEM high = get(TVGN_CHILD);
    HTREEITEM deep = item;
    for (int level = 0; level < 100; level++) {
        HTREEITEM child = add(deep, u"deep");
        send(TVM_EXPAND, TVE_EXPAND, deep);
        deep = child;
    }
    for (HTREEITEM wanted : {item, high, deep, get(TVGN_PARENT, deep), item}) {
        click(wanted);
        EXPECT_EQ(underPointer(), wanted);
        EXPECT_EQ(flags, TVHT_ONITEMLABEL);
    }
    click(item, TreePart::Button);
    EXPECT_EQ(flags, TVHT_ONITEMBUTTON);
    click(deep);  // stands below a collapsed item now: nobody can have clicked it
    EXPECT_EQ(underPointer(), item);

    TVHITTESTINFO hit = {};
    hit.pt = {3, -1};
    EXPECT_EQ(SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)), 0);
    EXPECT_EQ(hit.flags, TVHT_ABOVE);
    hit.pt = {-1, 500};
    EXPECT_EQ(SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)), 0);
    EXPECT_EQ(hit.flags, TVHT_BELOW | TVHT_TOLEFT);
}

TEST_F(TreeViewTest, UserFoldsWithTheParentToldEachTime)
{
    HTREEITEM a = add(nullptr, u"a", TVI_LAST, true);
    HTREEITEM empty = add(nullptr, u"e", TVI_LAST, true);
    answer = [&](const NMTREEVIEWW& change) {
        if (change.hdr.code == TVN_ITEMEXPANDINGW && change.itemNew.hItem == a && change.action == TVE_EXPAND)
            add(a, u"k");
        return 0;
    };
    click(a, TreePart::Button);
    EXPECT_EQ(told(), (Lines{"click a", "expanding a open", "expanded a open"}));
    click(a);
    click(a, TreePart::Label, InputDoubleClick);
    EXPECT_EQ(told(), (Lines{"click a", "changing ->a", "changed ->a mouse", "click a", "double click",
                             "expanding a shut", "expanded a shut"}));
    click(a, TreePart::Button, InputDoubleClick);
    EXPECT_EQ(told(), (Lines{"click a", "expanding a open", "expanded a open", "double click"}));

    click(empty, TreePart::Button);  // nothing came: it stays collapsed
    EXPECT_EQ(told(), (Lines{"click e", "expanding e open"}));
    EXPECT_FALSE(isExpanded(empty));
    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == TVN_ITEMEXPANDINGW ? 1 : 0; };
    click(a, TreePart::Button);
    EXPECT_TRUE(isExpanded(a));
}

TEST_F(TreeViewTest, SelectionLeavesACollapsingItemBeforeItsChildrenGo)
{
    HTREEITEM a = add(nullptr, u"a");
    HTREEITEM b = add(a, u"b");
    HTREEITEM c = add(b, u"c");
    send(TVM_EXPAND, TVE_EXPAND, a);
    send(TVM_EXPAND, TVE_EXPAND, b);
    click(c);
    told();
    answer = [&](const NMTREEVIEWW& change) {
        if (change.hdr.code == TVN_ITEMEXPANDEDW)
            send(TVM_DELETEITEM, 0, b);
        return change.hdr.code == TVN_SELCHANGINGW ? 1 : 0;  // can't be refused here
    };
    click(a, TreePart::Button);
    EXPECT_EQ(told(), (Lines{"click a", "expanding a shut", "changing c>a", "changed c>a", "expanded a shut",
                             "delete c", "delete b"}));
    EXPECT_EQ(selected(), "a");
}

TEST_F(TreeViewTest, ProgramExpandsToldOnceUntilReset)
{
    HTREEITEM a = add(nullptr, u"a", TVI_LAST, true);
    constexpr WPARAM Reset = TVE_TOGGLE | TVE_COLLAPSERESET;
    EXPECT_EQ(send(TVM_EXPAND, TVE_EXPAND, a), 0);  // no child came
    EXPECT_EQ(send(TVM_EXPAND, TVE_COLLAPSE, a), 0);
    EXPECT_EQ(told(), Lines{"expanding a open"});
    HTREEITEM b = add(a, u"b");
    HTREEITEM c = add(b, u"c");
    EXPECT_NE(send(TVM_EXPAND, TVE_EXPAND, a), 0);
    EXPECT_EQ(told(), (Lines{"expanding a open", "expanded a open"}));
    EXPECT_NE(send(TVM_EXPAND, TVE_EXPAND, a), 0);
    EXPECT_NE(send(TVM_EXPAND, TVE_COLLAPSE, a), 0);
    EXPECT_NE(send(TVM_EXPAND, TVE_TOGGLE, a), 0);
    EXPECT_EQ(told(), Lines{});
    EXPECT_EQ(state(a), TVIS_EXPANDED | TVIS_EXPANDEDONCE);

    send(TVM_SELECTITEM, TVGN_CARET, c);
    told();
    EXPECT_NE(send(TVM_EXPAND, Reset, a), 0);
    EXPECT_EQ(told(), (Lines{"changing c>a", "changed c>a", "delete c", "delete b"}));
    EXPECT_EQ(state(a), TVIS_SELECTED);
    EXPECT_EQ(children(a), "");

    send(TVM_EXPAND, TVE_EXPAND, a);  // its button stayed, and it is asked for again
    EXPECT_EQ(told(), Lines{"expanding a open"});

    // Collapsed and emptied by the user's side: the bit is set, so the toggle fails in silence.
    b = add(a, u"b");
    click(a, TreePart::Button);
    click(a, TreePart::Button);
    send(TVM_DELETEITEM, 0, b);
    told();
    EXPECT_EQ(send(TVM_EXPAND, Reset, a), 0);
    EXPECT_EQ(told(), Lines{});
}

TEST_F(TreeViewTest, SelectionOfADeletedItemGoesToANeighbour)
{
    HTREEITEM a = add(nullptr, u"a");
    HTREEITEM b = add(a, u"b");
    HTREEITEM c = add(a, u"c");
    send(TVM_SELECTITEM, TVGN_CARET, b);
    told();
    send(TVM_DELETEITEM, 0, b);
    EXPECT_EQ(told(), (Lines{"changing b>c", "changed b>c", "delete b"}));
    HTREEITEM d = add(a, u"d");
    send(TVM_SELECTITEM, TVGN_CARET, d);
    send(TVM_DELETEITEM, 0, d);
    EXPECT_EQ(selected(), "c");
    send(TVM_DELETEITEM, 0, c);
    EXPECT_EQ(selected(), "a");
    EXPECT_FALSE(isExpanded(a));
    told();
    send(TVM_DELETEITEM, 0, TVI_ROOT);
    EXPECT_EQ(told(), (Lines{"changing a>-", "changed a>-", "delete a"}));
    EXPECT_EQ(send(TVM_GETCOUNT), 0);
    EXPECT_EQ(get(TVGN_CARET), nullptr);
}

TEST_F(TreeViewTest, DeadHandleIsRefusedThoughItsPlaceServesAgain)
{
    HTREEITEM dead = add(nullptr, u"old");
    send(TVM_DELETEITEM, 0, dead);
    HTREEITEM alive = add(nullptr, u"new");
    ASSERT_NE(dead, alive);
    for (HTREEITEM bad : {dead, reinterpret_cast<HTREEITEM>(INT_PTR{77}), reinterpret_cast<HTREEITEM>(INT_PTR{-1})}) {
        TVITEMW record = {};
        record.mask = TVIF_PARAM | TVIF_IMAGE;
        record.hItem = bad;
        record.lParam = 5;
        EXPECT_EQ(SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record)), 0);
        EXPECT_EQ(record.lParam, 5);
        EXPECT_EQ(SendMessageW(tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&record)), 0);
        EXPECT_EQ(send(TVM_DELETEITEM, 0, bad), 0);
        EXPECT_EQ(send(TVM_EXPAND, TVE_EXPAND, bad), 0);
        EXPECT_EQ(send(TVM_SELECTITEM, TVGN_CARET, bad), 0);
        EXPECT_EQ(send(TVM_ENSUREVISIBLE, 0, bad), 0);
        EXPECT_EQ(get(TVGN_NEXT, bad), nullptr);
        EXPECT_EQ(get(TVGN_CHILD, bad), nullptr);
        EXPECT_EQ(add(bad, u"child"), nullptr);
    }
    click(dead);
    EXPECT_EQ(told(), Lines{"delete old"});
    EXPECT_EQ(children(nullptr), "new");
}

// Whatever the parent does to the items while it is told of them.
TEST_F(TreeViewTest, ParentMayDeleteWhatItIsToldOf)
{
    for (const UINT code :
         {NM_CLICK, TVN_SELCHANGINGW, TVN_SELCHANGEDW, TVN_ITEMEXPANDINGW, TVN_ITEMEXPANDEDW, TVN_DELETEITEMW}) {
        HTREEITEM a = add(nullptr, u"a");
        HTREEITEM b = add(a, u"b");
        add(b, u"c");
        send(TVM_EXPAND, TVE_EXPAND, a);
        answer = [&](const NMTREEVIEWW& change) {
            if (change.hdr.code == code) {
                answer = [](const NMTREEVIEWW&) { return 0; };
                add(a, u"late");
                send(TVM_DELETEITEM, 0, a);
            }
            return 0;
        };
        click(b);
        click(b, TreePart::Label, InputDoubleClick);
        click(b, TreePart::Button);
        send(TVM_DELETEITEM, 0, a);
        EXPECT_EQ(send(TVM_GETCOUNT), 0) << static_cast<int>(code);
        answer = [](const NMTREEVIEWW&) { return 0; };
    }
}

TEST_F(TreeViewTest, KeysReachEveryItem)
{
    HTREEITEM a = add(nullptr, u"a", TVI_LAST, true);
    HTREEITEM b = add(a, u"Beta");
    add(b, u"inner");
    add(a, u"bird");
    add(nullptr, u"y");
    for (int i = 0; i < 20; i++)
        add(nullptr, u"z");
    const auto after = [this](WORD pressed) {
        key(pressed);
        return selected();
    };
    EXPECT_EQ(after(VK_DOWN), "a");  // nothing was selected
    told();
    EXPECT_EQ(after(VK_RIGHT), "a");
    EXPECT_EQ(after(VK_RIGHT), "Beta");
    EXPECT_EQ(told(), (Lines{"expanding a open", "expanded a open", "changing a>Beta", "changed a>Beta key"}));
    EXPECT_EQ(after(VK_DOWN), "bird");
    EXPECT_EQ(after(VK_DOWN), "y");
    EXPECT_EQ(after(VK_NEXT), "z");
    EXPECT_EQ(get(TVGN_NEXT, get(TVGN_CARET)) != nullptr, true);
    EXPECT_EQ(after(VK_PRIOR), "y");
    EXPECT_EQ(after(VK_END), "z");
    EXPECT_EQ(get(TVGN_NEXT, get(TVGN_CARET)), nullptr);
    EXPECT_EQ(after(VK_DOWN), "z");
    EXPECT_EQ(after(VK_HOME), "a");
    EXPECT_EQ(after(VK_UP), "a");

    type(u'B');
    EXPECT_EQ(selected(), "Beta");
    type(u'I');
    EXPECT_EQ(selected(), "bird");
    EXPECT_EQ(after(VK_BACK), "a");
    EXPECT_EQ(after(VK_MULTIPLY), "a");
    EXPECT_TRUE(isExpanded(b));
    EXPECT_EQ(after(VK_LEFT), "a");
    EXPECT_FALSE(isExpanded(a));
    EXPECT_EQ(after(VK_LEFT), "a");
    key(VK_ADD);
    EXPECT_TRUE(isExpanded(a));
    key(VK_SUBTRACT);
    EXPECT_FALSE(isExpanded(a));
    told();
    key(VK_RETURN);
    EXPECT_EQ(told(), Lines{"return"});
    SendMessageW(tree, WM_KEYDOWN, VK_DOWN, KeyWithControl);
    EXPECT_EQ(selected(), "a");
}

TEST_F(TreeViewTest, OneLetterAgainGoesOnToTheNextItem)
{
    for (const WCHAR* each : {u"b1", u"c", u"b2", u"bb"})
        add(nullptr, each);
    Lines visited;
    for (int i = 0; i < 4; i++) {
        type(u'b');
        visited.push_back(selected());
    }
    EXPECT_EQ(visited, (Lines{"b1", "b2", "bb", "b1"}));
    told();
    type(u'?');
    EXPECT_EQ(told(), Lines{});
}

TEST_F(TreeViewTest, ItemsStandWhereTheyWereAskedFor)
{
    HTREEITEM c = add(nullptr, u"c", TVI_SORT);
    for (const WCHAR* each : {u"A", u"e", u"B", u"d"})
        add(nullptr, each, TVI_SORT);
    EXPECT_EQ(children(nullptr), "ABcde");
    send(TVM_DELETEITEM, 0, c);
    add(nullptr, u"C", TVI_SORT);
    EXPECT_EQ(children(nullptr), "ABCde");
    add(nullptr, u"z", TVI_FIRST);  // no order any more: in front of the first that is greater
    HTREEITEM y = add(nullptr, u"y", TVI_LAST);
    add(nullptr, u"c", TVI_SORT);
    EXPECT_EQ(children(nullptr), "czABCdey");
    add(nullptr, u"w", y);
    add(y, u"in", TVI_FIRST);
    EXPECT_EQ(children(nullptr), "czABCdeyw");
    EXPECT_EQ(children(y), "in");
}

TEST_F(TreeViewTest, LongTextIsCutAtAWholeCharacter)
{
    HTREEITEM item = add(nullptr, u"ab\U0001F600");
    TVITEMW record = {};
    record.mask = TVIF_TEXT;
    record.hItem = item;
    WCHAR out[6] = u"-----";
    record.pszText = out;
    for (const auto& [room, expected] : {std::pair{0, u"-----"}, {4, u"ab"}, {5, u"ab\U0001F600"}, {1, u""}}) {
        record.cchTextMax = room;
        EXPECT_NE(SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record)), 0);
        EXPECT_EQ(std::u16string(out), expected);
    }
}

TEST_F(TreeViewTest, WindowOfAnotherThreadTakesClicksAndTheKeyboard)
{
    TestUser user;
    HWND other = nullptr;
    HTREEITEM a = nullptr;
    WindowThread thread([&] {
        HWND top = makeWindow(windowClass(u"TreeTop", DefWindowProcW));
        ShowWindow(top, SW_HIDE);
        other = CreateWindowExW(0, u"SysTreeView32", u"", WS_CHILD | WS_VISIBLE, 0, 0, 200, 160, top, nullptr, nullptr,
                                nullptr);
        std::swap(other, tree);
        a = add(nullptr, u"a");
        add(nullptr, u"b");
        std::swap(other, tree);
        ShowWindow(top, SW_SHOW);
        return top;
    });
    user.waitUntil([&] { return takesInput(other); });
    EXPECT_EQ(selectedTreeItem(other), a);  // the focus came with nothing selected
    user.key(thread.window(), VK_DOWN);
    user.waitUntil([&] { return takesInput(other) && selectedTreeItem(other) != a; });
    user.waitUntil([&] { return postTreeClick(other, a, TreePart::Label); });
    user.waitUntil([&] { return takesInput(other) && selectedTreeItem(other) == a; });
}

}  // namespace
