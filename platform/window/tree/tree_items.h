// tree_items.h - the items of one tree view, as parents, children and siblings.
//
// Items are in numbered slots and refer to each other by slot numbers. A handle is a slot number and the number of
// times that the slot has been used, so the handle of an erased item stays invalid when its slot is used again.
// Inserting first, last or after a sibling, and erasing, take constant time. Inserting by text takes logarithmic time
// while the siblings are sorted.
#pragma once

#include "kernel/slot_table.h"

#include "ce/types.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace platform::window {

// A slot number. Slot 0 is the invisible parent of the top items. Elsewhere 0 means "no item".
using ItemIndex = std::uint32_t;

struct Item {
    static constexpr std::int8_t ButtonByChildren = -1;  // not set: a button while there are children

    std::u16string text;
    LPARAM parameter = 0;
    ItemIndex parent = 0;
    ItemIndex previous = 0;
    ItemIndex next = 0;
    ItemIndex firstChild = 0;
    ItemIndex lastChild = 0;
    int image = 0;
    int selectedImage = 0;
    std::int8_t button = ButtonByChildren;  // otherwise 0 or 1
    bool expanded = false;
    bool expandedOnce = false;
    // What the display has received: see tree_log.h.
    bool shown = false;
    bool updateNoted = false;
    bool foldNoted = false;

    bool hasButton() const { return button == ButtonByChildren ? firstChild != 0 : button != 0; }
};

class TreeItems {
public:
    TreeItems();

    Item& operator[](ItemIndex index) { return slots_[index]; }
    const Item& operator[](ItemIndex index) const { return slots_[index]; }
    std::size_t count() const { return count_; }

    // 0 for null and for the handle of an erased item.
    ItemIndex find(HTREEITEM handle) const;
    // Null for 0.
    HTREEITEM handleOf(ItemIndex index) const;

    // `after`: a child of `parent`, or 0 to insert before all others.
    ItemIndex insertAfter(ItemIndex parent, ItemIndex after, std::u16string_view text);
    // Ignores case. Inserts after equal texts. If the siblings aren't sorted, inserts before the first greater one.
    ItemIndex insertByText(ItemIndex parent, std::u16string_view text);
    void setText(ItemIndex index, std::u16string_view text);
    // Erases the item and its descendants; 0 erases all items.
    void erase(ItemIndex index);

    int levelOf(ItemIndex index) const;  // 0: a top item
    bool isWithin(ItemIndex index, ItemIndex ancestor) const;
    // The item itself, or its topmost collapsed ancestor.
    ItemIndex nearestVisible(ItemIndex index) const;

    // Walk the visible items in the order of the rows. 0 after the last and before the first.
    ItemIndex firstVisible() const { return slots_[0].firstChild; }
    ItemIndex nextVisible(ItemIndex index) const;
    ItemIndex previousVisible(ItemIndex index) const;
    ItemIndex lastVisible() const { return lastVisibleBelow(0); }

    // Walks all descendants of `top`, visible or not, beginning with nextWithin(top, top). 0 after the last.
    ItemIndex nextWithin(ItemIndex index, ItemIndex top) const;

private:
    struct ByText {
        using is_transparent = void;
        const TreeItems* items;
        bool operator()(ItemIndex left, ItemIndex right) const;
        bool operator()(std::u16string_view left, ItemIndex right) const;
        bool operator()(ItemIndex left, std::u16string_view right) const;
    };
    using Order = std::multiset<ItemIndex, ByText>;

    ItemIndex add(std::u16string_view text);
    void remove(ItemIndex index);
    void link(ItemIndex index, ItemIndex parent, ItemIndex after);
    void unlink(ItemIndex index);
    ItemIndex lastVisibleBelow(ItemIndex index) const;
    ItemIndex precedingByText(ItemIndex parent, std::u16string_view text) const;
    Order* orderOf(ItemIndex parent);
    void dropFromOrder(ItemIndex index);

    kernel::SlotTable<Item, std::deque> slots_;
    std::size_t count_ = 0;
    std::unordered_map<ItemIndex, Order> orders_;  // of the parents whose children insertByText keeps sorted
};

}  // namespace platform::window
