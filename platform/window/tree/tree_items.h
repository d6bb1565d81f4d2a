// tree_items.h - the items of one tree view: who stands below and beside whom. Knows no window, no message.
//
// Items live in the slots of a table, linked by their numbers. Inserting first, last or behind a sibling, and erasing,
// take constant time whatever the number of siblings; inserting by text takes logarithmic time among siblings that
// stand by text.
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

// A slot's number. 0 is the invisible parent of the top items, and stands for "none" everywhere else.
using ItemIndex = std::uint32_t;

struct Item {
    static constexpr std::int8_t ButtonByChildren = -1;  // never told: a button while there are children

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
    // What the display knows of it: see tree_log.h.
    bool shown = false;
    bool updateNoted = false;
    bool foldNoted = false;

    [[nodiscard]] bool hasButton() const { return button == ButtonByChildren ? firstChild != 0 : button != 0; }
};

class TreeItems {
public:
    TreeItems();

    [[nodiscard]] Item& operator[](ItemIndex index) { return places_[index]; }
    [[nodiscard]] const Item& operator[](ItemIndex index) const { return places_[index]; }
    [[nodiscard]] std::size_t count() const { return count_; }

    // 0 for null and for a handle that is no item (any more).
    [[nodiscard]] ItemIndex find(HTREEITEM handle) const;
    // Null for 0.
    [[nodiscard]] HTREEITEM handleOf(ItemIndex index) const;

    // `after`: a child of `parent`, 0: in front of all.
    ItemIndex insertBehind(ItemIndex parent, ItemIndex after, std::u16string_view text);
    // Without case, behind its equals; in front of the first that is greater if the siblings stand in no order.
    ItemIndex insertByText(ItemIndex parent, std::u16string_view text);
    void setText(ItemIndex index, std::u16string_view text);
    // With all below it; 0 takes everything.
    void erase(ItemIndex index);

    [[nodiscard]] int levelOf(ItemIndex index) const;  // 0: a top item
    [[nodiscard]] bool isWithin(ItemIndex index, ItemIndex ancestor) const;
    // Itself, or what it disappeared into when an item above it collapsed.
    [[nodiscard]] ItemIndex nearestVisible(ItemIndex index) const;

    // In the order of the rows, over what is expanded; 0 behind the last and before the first.
    [[nodiscard]] ItemIndex firstVisible() const { return places_[0].firstChild; }
    [[nodiscard]] ItemIndex nextVisible(ItemIndex index) const;
    [[nodiscard]] ItemIndex previousVisible(ItemIndex index) const;
    [[nodiscard]] ItemIndex lastVisible() const { return lastVisibleBelow(0); }

    // The next one of all that lie below `top`, expanded or not; 0 behind the last. Begins with `top`.
    [[nodiscard]] ItemIndex nextWithin(ItemIndex index, ItemIndex top) const;

private:
    struct ByText {
        using is_transparent = void;
        const TreeItems* items;
        bool operator()(ItemIndex left, ItemIndex right) const;
        bool operator()(std::u16string_view left, ItemIndex right) const;
        bool operator()(ItemIndex left, std::u16string_view right) const;
    };
    using Order = std::multiset<ItemIndex, ByText>;

    [[nodiscard]] ItemIndex add(std::u16string_view text);
    void remove(ItemIndex index);
    void link(ItemIndex index, ItemIndex parent, ItemIndex after);
    void unlink(ItemIndex index);
    [[nodiscard]] ItemIndex lastVisibleBelow(ItemIndex index) const;
    [[nodiscard]] ItemIndex behindBySearch(ItemIndex parent, std::u16string_view text) const;
    [[nodiscard]] Order* orderOf(ItemIndex parent);
    void dropFromOrder(ItemIndex index);

    kernel::SlotTable<Item, std::deque> places_;
    std::size_t count_ = 0;
    std::unordered_map<ItemIndex, Order> orders_;  // of parents whose children stand by text and were put in so
};

}  // namespace platform::window
