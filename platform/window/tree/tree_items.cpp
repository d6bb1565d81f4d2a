#include "tree_items.h"

#include "text/case_folding.h"

#include <algorithm>

namespace platform::window {

using text::compareWithoutCase;

TreeItems::TreeItems()
{
    slots_[0].expanded = true;
}

ItemIndex TreeItems::find(HTREEITEM handle) const
{
    return slots_.find(reinterpret_cast<std::uintptr_t>(handle));
}

HTREEITEM TreeItems::handleOf(ItemIndex index) const
{
    return index == 0 ? nullptr : reinterpret_cast<HTREEITEM>(slots_.keyOf(index));
}

ItemIndex TreeItems::insertAfter(ItemIndex parent, ItemIndex after, std::u16string_view text)
{
    orders_.erase(parent);
    const ItemIndex index = add(text);
    link(index, parent, after);
    return index;
}

ItemIndex TreeItems::insertByText(ItemIndex parent, std::u16string_view text)
{
    Order* order = orderOf(parent);
    if (!order)
        return insertAfter(parent, precedingByText(parent, text), text);
    const auto greater = order->upper_bound(text);
    const ItemIndex after = greater == order->end() ? slots_[parent].lastChild : slots_[*greater].previous;
    const ItemIndex index = add(text);
    link(index, parent, after);
    order->emplace_hint(greater, index);
    return index;
}

void TreeItems::setText(ItemIndex index, std::u16string_view text)
{
    orders_.erase(slots_[index].parent);
    slots_[index].text = text;
}

// Frees descendants before their ancestors.
void TreeItems::erase(ItemIndex index)
{
    for (ItemIndex at = index;;) {
        while (slots_[at].firstChild != 0)
            at = slots_[at].firstChild;
        if (at == 0)
            return;
        const ItemIndex parent = slots_[at].parent;
        dropFromOrder(at);
        unlink(at);
        remove(at);
        if (at == index)
            return;
        at = parent;
    }
}

int TreeItems::levelOf(ItemIndex index) const
{
    int level = 0;
    for (ItemIndex at = slots_[index].parent; at != 0; at = slots_[at].parent)
        ++level;
    return level;
}

bool TreeItems::isWithin(ItemIndex index, ItemIndex ancestor) const
{
    while (index != 0 && index != ancestor)
        index = slots_[index].parent;
    return index == ancestor;
}

ItemIndex TreeItems::nearestVisible(ItemIndex index) const
{
    ItemIndex visible = index;
    for (ItemIndex at = slots_[index].parent; at != 0; at = slots_[at].parent)
        if (!slots_[at].expanded)
            visible = at;
    return visible;
}

ItemIndex TreeItems::nextVisible(ItemIndex index) const
{
    const Item& item = slots_[index];
    if (item.expanded && item.firstChild != 0)
        return item.firstChild;
    for (; index != 0; index = slots_[index].parent)
        if (slots_[index].next != 0)
            return slots_[index].next;
    return 0;
}

ItemIndex TreeItems::previousVisible(ItemIndex index) const
{
    const Item& item = slots_[index];
    return item.previous != 0 ? lastVisibleBelow(item.previous) : item.parent;
}

ItemIndex TreeItems::lastVisibleBelow(ItemIndex index) const
{
    while (slots_[index].expanded && slots_[index].lastChild != 0)
        index = slots_[index].lastChild;
    return index;
}

ItemIndex TreeItems::nextWithin(ItemIndex index, ItemIndex top) const
{
    if (slots_[index].firstChild != 0)
        return slots_[index].firstChild;
    for (; index != top; index = slots_[index].parent)
        if (slots_[index].next != 0)
            return slots_[index].next;
    return 0;
}

bool TreeItems::ByText::operator()(ItemIndex left, ItemIndex right) const
{
    return compareWithoutCase((*items)[left].text, (*items)[right].text) < 0;
}

bool TreeItems::ByText::operator()(std::u16string_view left, ItemIndex right) const
{
    return compareWithoutCase(left, (*items)[right].text) < 0;
}

bool TreeItems::ByText::operator()(ItemIndex left, std::u16string_view right) const
{
    return compareWithoutCase((*items)[left].text, right) < 0;
}

ItemIndex TreeItems::add(std::u16string_view text)
{
    const ItemIndex index = slots_.add({});
    slots_[index].text = text;
    ++count_;
    return index;
}

void TreeItems::remove(ItemIndex index)
{
    orders_.erase(index);
    (void)slots_.remove(index);
    --count_;
}

void TreeItems::link(ItemIndex index, ItemIndex parent, ItemIndex after)
{
    Item& item = slots_[index];
    Item& above = slots_[parent];
    item.parent = parent;
    item.previous = after;
    item.next = after != 0 ? slots_[after].next : above.firstChild;
    (after != 0 ? slots_[after].next : above.firstChild) = index;
    (item.next != 0 ? slots_[item.next].previous : above.lastChild) = index;
}

void TreeItems::unlink(ItemIndex index)
{
    const Item& item = slots_[index];
    Item& above = slots_[item.parent];
    (item.previous != 0 ? slots_[item.previous].next : above.firstChild) = item.next;
    (item.next != 0 ? slots_[item.next].previous : above.lastChild) = item.previous;
}

ItemIndex TreeItems::precedingByText(ItemIndex parent, std::u16string_view text) const
{
    ItemIndex after = 0;
    for (ItemIndex at = slots_[parent].firstChild; at != 0; at = slots_[at].next) {
        if (compareWithoutCase(slots_[at].text, text) > 0)
            break;
        after = at;
    }
    return after;
}

// If the children of `parent` are in the order of their texts, returns them as a set in this order. Otherwise returns
// null. The first call makes the set, and later calls return the same set. insertByText and erase update the set.
// insertAfter and setText delete it, so the next call makes it again.
TreeItems::Order* TreeItems::orderOf(ItemIndex parent)
{
    const auto known = orders_.find(parent);
    if (known != orders_.end())
        return &known->second;
    Order order(ByText{this});
    for (ItemIndex at = slots_[parent].firstChild; at != 0; at = slots_[at].next) {
        const ItemIndex previous = slots_[at].previous;
        if (previous != 0 && compareWithoutCase(slots_[previous].text, slots_[at].text) > 0)
            return nullptr;
        order.emplace_hint(order.end(), at);
    }
    return &orders_.emplace(parent, std::move(order)).first->second;
}

void TreeItems::dropFromOrder(ItemIndex index)
{
    if (orders_.empty())
        return;
    const auto known = orders_.find(slots_[index].parent);
    if (known == orders_.end())
        return;
    const auto equals = known->second.equal_range(std::u16string_view(slots_[index].text));
    known->second.erase(std::find(equals.first, equals.second, index));
}

}  // namespace platform::window
