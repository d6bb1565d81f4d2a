// tree_items.h - stores the items of one tree view as parents, children and siblings.
//
// Items are in numbered slots and refer to each other by slot numbers. A handle consists of a slot number and the
// number of times that the slot has been used. So the handle of an erased item stays invalid when its slot is used
// again. Inserting an item first, last or after a sibling takes constant time. Inserting by text takes logarithmic time
// if the siblings are sorted. Erasing takes constant time for each erased item, but logarithmic time among siblings
// that insertByText has sorted.
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

// A slot number. Slot 0 is the invisible parent of the top items. So 0 as a parent or ancestor means this invisible
// item, and so does 0 as an argument of erase and nextWithin. Otherwise 0 means "no item", for example as a sibling or
// as the result of a search.
using ItemIndex = std::uint32_t;

struct Item {
    // The value of `button` if the program doesn't say whether the item has a button. In this case an item with
    // children has a button, and an item without children has none.
    static constexpr std::int8_t ButtonByChildren = -1;

    std::u16string text;
    LPARAM parameter = 0;
    ItemIndex parent = 0;
    ItemIndex previous = 0;
    ItemIndex next = 0;
    ItemIndex firstChild = 0;
    ItemIndex lastChild = 0;
    int image = 0;
    int selectedImage = 0;
    std::int8_t button = ButtonByChildren;  // or 0 or 1, as the program has set it
    bool expanded = false;
    bool expandedOnce = false;
    // TreeLog uses these fields.
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

    // Returns 0 for null and for the handle of an erased item.
    ItemIndex find(HTREEITEM handle) const;
    // Returns null for 0.
    HTREEITEM handleOf(ItemIndex index) const;

    // `after`: a child of `parent`, or 0 to insert before all others.
    ItemIndex insertAfter(ItemIndex parent, ItemIndex after, std::u16string_view text);
    // Inserts an item in the order of the texts, without regard to case, and after siblings with an equal text. If the
    // siblings aren't sorted, inserts the item before the first sibling with a greater text.
    ItemIndex insertByText(ItemIndex parent, std::u16string_view text);
    void setText(ItemIndex index, std::u16string_view text);
    // Erases the item and its descendants; 0 erases all items.
    void erase(ItemIndex index);

    int levelOf(ItemIndex index) const;  // 0: a top item
    bool isWithin(ItemIndex index, ItemIndex ancestor) const;
    // Returns the topmost collapsed ancestor of the item, or the item itself if all its ancestors are expanded.
    ItemIndex nearestVisible(ItemIndex index) const;

    // These functions walk through the visible items in the order of the rows. An item is visible if all its ancestors
    // are expanded. The functions return 0 after the last visible item and before the first.
    ItemIndex firstVisible() const { return slots_[0].firstChild; }
    ItemIndex nextVisible(ItemIndex index) const;
    ItemIndex previousVisible(ItemIndex index) const;
    ItemIndex lastVisible() const { return lastVisibleBelow(0); }

    // Returns the descendant of `top` that follows `index` in the order of the rows, visible or not. nextWithin(top,
    // top) returns the first descendant. Returns 0 after the last one.
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
    std::unordered_map<ItemIndex, Order> orders_;  // for parents whose children insertByText keeps sorted
};

}  // namespace platform::window
