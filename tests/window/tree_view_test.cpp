#include "tree_control_fixture.h"
#include "window/input.h"

#include <string_view>

namespace {

using namespace platform::window;
using namespace platform::window::test;

// Records the notifications of the tree to its parent: "changed a>b mouse".
class TreeViewTest : public TreeControlTest {
protected:
    TreeViewTest() : TreeControlTest(u"TreeParent", procedure) { running = this; }

    HTREEITEM get(WPARAM relation, HTREEITEM item = nullptr) const
    {
        return reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, relation, item));
    }
    std::string name(HTREEITEM item) const
    {
        TreeItemState found;
        return readTreeItem(tree, item, found) ? std::string(found.text.begin(), found.text.end()) : "-";
    }
    UINT state(HTREEITEM item) const
    {
        TVITEMW record = {};
        record.mask = TVIF_STATE;
        record.hItem = item;
        send(TVM_GETITEMW, 0, &record);
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
    std::string selected() const { return name(get(TVGN_CARET)); }
    // Returns the selected items after each key or letter.
    std::string press(const std::vector<WORD>& keys, UINT message = WM_KEYDOWN) const
    {
        std::string visited;
        for (const WORD key : keys) {
            send(message, key);
            visited += selected() + " ";
        }
        return visited;
    }
    std::string type(std::u16string_view letters) const { return press({letters.begin(), letters.end()}, WM_CHAR); }
    HTREEITEM underPointer() const
    {
        const DWORD position = GetMessagePos();
        TVHITTESTINFO hit = {};
        hit.pt = {static_cast<SHORT>(LOWORD(position)), static_cast<SHORT>(HIWORD(position))};
        ScreenToClient(tree, &hit.pt);
        auto* item = reinterpret_cast<HTREEITEM>(send(TVM_HITTEST, 0, &hit));
        EXPECT_EQ(item, hit.hItem);
        flags = hit.flags;
        return item;
    }
    std::string notified() { return std::exchange(lines, {}); }

    mutable UINT flags = 0;
    std::function<LRESULT(const NMTREEVIEWW&)> answer = [](const NMTREEVIEWW&) { return 0; };

private:
    static LRESULT procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message != WM_NOTIFY)
            return DefWindowProcW(window, message, wParam, lParam);
        EXPECT_EQ(wParam, 102U);
        const auto& change = *reinterpret_cast<const NMTREEVIEWW*>(lParam);
        const std::string line = running->describe(change);
        running->lines += (line.empty() || running->lines.empty() ? "" : ", ") + line;
        const auto current = running->answer;  // a copy, because the call may replace `answer`
        return current(change);
    }

    std::string describe(const NMTREEVIEWW& change) const
    {
        const char* const causes[] = {"", " mouse", " key"};
        // The notification of a click has only the header.
        const auto direction = [&] { return change.action == TVE_COLLAPSE ? " shut" : " open"; };
        const auto selection = [&] { return name(change.itemOld.hItem) + ">" + name(change.itemNew.hItem); };
        switch (change.hdr.code) {
        case NM_CLICK:
            return "click " + name(underPointer());
        case NM_DBLCLK:
            return "double click";
        case NM_RETURN:
            return "return";
        case TVN_SELCHANGINGW:
            return "changing " + selection();
        case TVN_SELCHANGEDW:
            return "changed " + selection() + causes[change.action];
        case TVN_ITEMEXPANDINGW:
            return "expanding " + name(change.itemNew.hItem) + direction();
        case TVN_ITEMEXPANDEDW:
            return "expanded " + name(change.itemNew.hItem) + direction();
        case TVN_DELETEITEMW:
            return "delete " + name(change.itemOld.hItem);
        default:
            return "";
        }
    }

    static TreeViewTest* running;
    std::string lines;
};
TreeViewTest* TreeViewTest::running = nullptr;

TEST_F(TreeViewTest, ClickIsNotifiedBeforeTheSelectionMoves)
{
    HTREEITEM a = add(nullptr, u"a");
    HTREEITEM b = add(nullptr, u"b");
    click(a);
    EXPECT_EQ(notified(), "click a, changing ->a, changed ->a mouse");
    click(b, TreePart::Icon);
    EXPECT_EQ(notified(), "click b, changing a>b, changed a>b mouse");
    click(b);
    EXPECT_EQ(notified(), "click b");
    click(a, TreePart::Right);
    EXPECT_EQ(flags, TVHT_ONITEMRIGHT);
    click(nullptr, TreePart::Label);
    EXPECT_EQ(notified(), "click a, click -");
    EXPECT_EQ(selected(), "b");

    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == TVN_SELCHANGINGW ? 1 : 0; };
    click(a);
    EXPECT_EQ(notified(), "click a, changing b>a");
    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == NM_CLICK ? 1 : 0; };
    click(a);
    click(a, TreePart::Label, InputDoubleClick);
    EXPECT_EQ(notified(), "click a, click a");
    EXPECT_EQ(selected(), "b");

    answer = [](const NMTREEVIEWW&) { return 0; };
    click(a, TreePart::Label, InputDoubleClick);  // the first of the two clicks was on b
    EXPECT_EQ(notified(), "click a, changing b>a, changed b>a mouse, double click");
}

TEST_F(TreeViewTest, PointOfAClickFindsTheItemHoweverFarItIsScrolledOrIndented)
{
    HTREEITEM item = nullptr;
    for (int i = 0; i < 3000; i++)
        item = add(nullptr, u"x");
    HTREEITEM deep = item;
    for (int level = 0; level < 100; level++) {
        HTREEITEM child = add(deep, u"deep");
        send(TVM_EXPAND, TVE_EXPAND, deep);
        deep = child;
    }
    for (HTREEITEM wanted : {item, get(TVGN_CHILD), deep, get(TVGN_PARENT, deep), item}) {
        click(wanted);
        EXPECT_EQ(underPointer(), wanted);
        EXPECT_EQ(flags, TVHT_ONITEMLABEL);
    }
    click(item, TreePart::Button);
    EXPECT_EQ(flags, TVHT_ONITEMBUTTON);
    click(deep);  // the item is hidden below a collapsed one, so this can't be a user's click
    EXPECT_EQ(underPointer(), item);
    for (const auto& [point, outside] :
         {std::pair{POINT{3, -1}, TVHT_ABOVE}, {POINT{-1, 500}, TVHT_BELOW | TVHT_TOLEFT}}) {
        TVHITTESTINFO hit = {};
        hit.pt = point;
        EXPECT_EQ(send(TVM_HITTEST, 0, &hit), 0);
        EXPECT_EQ(hit.flags, static_cast<UINT>(outside));
    }
}

TEST_F(TreeViewTest, EachExpansionByTheUserIsNotified)
{
    HTREEITEM a = add(nullptr, u"a", TVI_LAST, true);
    HTREEITEM empty = add(nullptr, u"e", TVI_LAST, true);
    answer = [&](const NMTREEVIEWW& change) {
        if (change.hdr.code == TVN_ITEMEXPANDINGW && change.itemNew.hItem == a && change.action == TVE_EXPAND)
            add(a, u"k");
        return 0;
    };
    click(a, TreePart::Button);
    EXPECT_EQ(notified(), "click a, expanding a open, expanded a open");
    click(a);
    click(a, TreePart::Label, InputDoubleClick);
    EXPECT_EQ(notified(),
              "click a, changing ->a, changed ->a mouse, click a, double click, expanding a shut, expanded a shut");
    click(a, TreePart::Button, InputDoubleClick);
    EXPECT_EQ(notified(), "click a, expanding a open, expanded a open, double click");

    click(empty, TreePart::Button);  // no child was added, so the item stays collapsed
    EXPECT_EQ(notified(), "click e, expanding e open");
    EXPECT_FALSE(isExpanded(empty));
    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == TVN_ITEMEXPANDINGW ? 1 : 0; };
    click(a, TreePart::Button);
    EXPECT_TRUE(isExpanded(a));

    // When an item is collapsed, the selection moves from its child to the item. The parent can't refuse this.
    select(get(TVGN_CHILD, a));
    answer = [](const NMTREEVIEWW& change) { return change.hdr.code == TVN_SELCHANGINGW ? 1 : 0; };
    click(a, TreePart::Button);
    EXPECT_EQ(selected(), "a");
}

TEST_F(TreeViewTest, ExpansionByTheProgramIsNotifiedOnceUntilReset)
{
    HTREEITEM a = add(nullptr, u"a", TVI_LAST, true);
    constexpr WPARAM Reset = TVE_TOGGLE | TVE_COLLAPSERESET;
    EXPECT_EQ(send(TVM_EXPAND, TVE_EXPAND, a), 0);  // no child was added
    EXPECT_EQ(send(TVM_EXPAND, TVE_COLLAPSE, a), 0);
    EXPECT_EQ(notified(), "expanding a open");
    HTREEITEM b = add(a, u"b");
    HTREEITEM c = add(b, u"c");
    EXPECT_NE(send(TVM_EXPAND, TVE_EXPAND, a), 0);
    EXPECT_EQ(notified(), "expanding a open, expanded a open");
    EXPECT_NE(send(TVM_EXPAND, TVE_EXPAND, a), 0);
    EXPECT_NE(send(TVM_EXPAND, TVE_COLLAPSE, a), 0);
    EXPECT_NE(send(TVM_EXPAND, TVE_TOGGLE, a), 0);
    EXPECT_EQ(notified(), "");
    EXPECT_EQ(state(a), TVIS_EXPANDED | TVIS_EXPANDEDONCE);

    select(c);
    notified();
    EXPECT_NE(send(TVM_EXPAND, Reset, a), 0);
    EXPECT_EQ(notified(), "changing c>a, changed c>a, delete c, delete b");
    EXPECT_EQ(state(a), TVIS_SELECTED);
    EXPECT_EQ(children(a), "");

    send(TVM_EXPAND, TVE_EXPAND, a);  // the item has kept its button, and the parent is notified again
    EXPECT_EQ(notified(), "expanding a open");

    // The user has expanded the item before, and it has no child now. So the toggle fails without a notification.
    b = add(a, u"b");
    click(a, TreePart::Button);
    click(a, TreePart::Button);
    remove(b);
    notified();
    EXPECT_EQ(send(TVM_EXPAND, Reset, a), 0);
    EXPECT_EQ(notified(), "");
}

TEST_F(TreeViewTest, SelectionOfADeletedItemMovesToANeighbour)
{
    HTREEITEM a = add(nullptr, u"a");
    HTREEITEM b = add(a, u"b");
    HTREEITEM c = add(a, u"c");
    select(b);
    notified();
    remove(b);
    EXPECT_EQ(notified(), "changing b>c, changed b>c, delete b");
    HTREEITEM d = add(a, u"d");
    select(d);
    remove(d);
    EXPECT_EQ(selected(), "c");
    remove(c);
    EXPECT_EQ(selected(), "a");
    EXPECT_FALSE(isExpanded(a));
    notified();
    remove(TVI_ROOT);
    EXPECT_EQ(notified(), "changing a>-, changed a>-, delete a");
    EXPECT_EQ(send(TVM_GETCOUNT), 0);
    EXPECT_EQ(get(TVGN_CARET), nullptr);
    add(nullptr, u"first");
    SetFocus(tree);  // the focus selects an item if none is selected
    EXPECT_EQ(selected(), "first");
}

TEST_F(TreeViewTest, DeadHandleIsRefusedAfterItsSlotIsUsedAgain)
{
    HTREEITEM dead = add(nullptr, u"old");
    remove(dead);
    HTREEITEM alive = add(nullptr, u"new");
    ASSERT_NE(dead, alive);
    for (HTREEITEM bad : {dead, reinterpret_cast<HTREEITEM>(INT_PTR{77}), reinterpret_cast<HTREEITEM>(INT_PTR{-1})}) {
        TVITEMW record = {};
        record.mask = TVIF_PARAM | TVIF_IMAGE;
        record.hItem = bad;
        record.lParam = 5;
        for (const UINT message : {TVM_GETITEMW, TVM_SETITEMW})
            EXPECT_EQ(send(message, 0, &record), 0);
        EXPECT_EQ(record.lParam, 5);
        for (const UINT message : {TVM_DELETEITEM, TVM_EXPAND, TVM_ENSUREVISIBLE, TVM_GETNEXTITEM})
            EXPECT_EQ(send(message, TVGN_NEXT, bad), 0);
        EXPECT_EQ(send(TVM_SELECTITEM, TVGN_CARET, bad), 0);
        EXPECT_EQ(get(TVGN_CHILD, bad), nullptr);
        EXPECT_EQ(add(bad, u"child"), nullptr);
    }
    click(dead);
    EXPECT_EQ(notified(), "delete old");
    EXPECT_EQ(children(nullptr), "new");
}

TEST_F(TreeViewTest, ParentMayDeleteTheItemsOfANotification)
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
                remove(a);
            }
            return 0;
        };
        click(b);
        click(b, TreePart::Label, InputDoubleClick);
        click(b, TreePart::Button);
        remove(a);
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
    const auto isLast = [this] { return get(TVGN_NEXT, get(TVGN_CARET)) == nullptr; };
    EXPECT_EQ(press({VK_DOWN}), "a ");  // nothing was selected
    notified();
    EXPECT_EQ(press({VK_RIGHT, VK_RIGHT}), "a Beta ");
    EXPECT_EQ(notified(), "expanding a open, expanded a open, changing a>Beta, changed a>Beta key");
    EXPECT_EQ(press({VK_DOWN, VK_DOWN, VK_NEXT}), "bird y z ");
    EXPECT_FALSE(isLast());
    EXPECT_EQ(press({VK_PRIOR, VK_END}), "y z ");
    EXPECT_TRUE(isLast());
    EXPECT_EQ(press({VK_DOWN, VK_HOME, VK_UP}), "z a a ");

    EXPECT_EQ(type(u"BI"), "Beta bird ");
    EXPECT_EQ(press({VK_BACK, VK_MULTIPLY}), "a a ");
    EXPECT_TRUE(isExpanded(b));
    for (const auto& [key, expanded] :
         {std::pair{VK_LEFT, false}, {VK_LEFT, false}, {VK_ADD, true}, {VK_SUBTRACT, false}}) {
        EXPECT_EQ(press({static_cast<WORD>(key)}), "a ");
        EXPECT_EQ(isExpanded(a), expanded);
    }
    notified();
    press({VK_RETURN});
    EXPECT_EQ(notified(), "return");
    send(WM_KEYDOWN, VK_DOWN, reinterpret_cast<const void*>(KeyWithControl));
    EXPECT_EQ(selected(), "a");
}

TEST_F(TreeViewTest, TypedTextSelectsUntilAnotherKeyIsPressedAndABlankWithoutAMatchIsAClick)
{
    for (const WCHAR* each : {u"b1", u"c", u"b2", u"bb", u"a b"})
        add(nullptr, each);
    EXPECT_EQ(type(u"bbbb"), "b1 b2 bb b1 ");
    notified();
    type(u"?");
    EXPECT_EQ(notified(), "");
    press({VK_UP});
    EXPECT_EQ(type(u"bb"), "b2 bb ");
    press({VK_HOME});
    EXPECT_EQ(type(u"a b"), "a b a b a b ");
    press({VK_UP});
    notified();
    type(u" b ");
    EXPECT_EQ(notified(), "click bb, changing bb>b1, changed bb>b1 key, click b1");
}

TEST_F(TreeViewTest, ItemsAreInsertedAtTheRequestedPosition)
{
    HTREEITEM c = add(nullptr, u"c", TVI_SORT);
    for (const WCHAR* each : {u"A", u"e", u"B", u"d"})
        add(nullptr, each, TVI_SORT);
    EXPECT_EQ(children(nullptr), "ABcde");
    remove(c);
    add(nullptr, u"C", TVI_SORT);
    EXPECT_EQ(children(nullptr), "ABCde");
    // The items are unsorted from here on. TVI_SORT inserts before the first greater item.
    add(nullptr, u"z", TVI_FIRST);
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
        EXPECT_NE(send(TVM_GETITEMW, 0, &record), 0);
        EXPECT_EQ(std::u16string(out), expected);
    }
}

}  // namespace
