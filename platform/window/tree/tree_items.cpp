// The items of one tree view.
#include "tree_items.h"

#include "text/case_folding.h"

#include <algorithm>

namespace platform::window {

using text::compareWithoutCase;

TreeItems::TreeItems()
{
    places_[0].expanded = true;
}

ItemIndex TreeItems::find(HTREEITEM handle) const
{
    return places_.find(reinterpret_cast<std::uintptr_t>(handle));
}

HTREEITEM TreeItems::handleOf(ItemIndex index) const
{
    return index == 0 ? nullptr : reinterpret_cast<HTREEITEM>(places_.keyOf(index));
}

ItemIndex TreeItems::insertBehind(ItemIndex parent, ItemIndex after, std::u16string_view text)
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
        return insertBehind(parent, behindBySearch(parent, text), text);
    const auto greater = order->upper_bound(text);
    const ItemIndex after = greater == order->end() ? places_[parent].lastChild : places_[*greater].previous;
    const ItemIndex index = add(text);
    link(index, parent, after);
    order->emplace_hint(greater, index);
    return index;
}

void TreeItems::setText(ItemIndex index, std::u16string_view text)
{
    orders_.erase(places_[index].parent);
    places_[index].text = text;
}

// From the leaves up, so that no place is freed before what lies below it.
void TreeItems::erase(ItemIndex index)
{
    for (ItemIndex at = index;;) {
        while (places_[at].firstChild != 0)
            at = places_[at].firstChild;
        if (at == 0)
            return;
        const ItemIndex parent = places_[at].parent;
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
    for (ItemIndex at = places_[index].parent; at != 0; at = places_[at].parent)
        ++level;
    return level;
}

bool TreeItems::isWithin(ItemIndex index, ItemIndex ancestor) const
{
    while (index != 0 && index != ancestor)
        index = places_[index].parent;
    return index == ancestor;
}

ItemIndex TreeItems::nearestVisible(ItemIndex index) const
{
    ItemIndex visible = index;
    for (ItemIndex at = places_[index].parent; at != 0; at = places_[at].parent)
        if (!places_[at].expanded)
            visible = at;
    return visible;
}

ItemIndex TreeItems::nextVisible(ItemIndex index) const
{
    const Item& item = places_[index];
    if (item.expanded && item.firstChild != 0)
        return item.firstChild;
    for (; index != 0; index = places_[index].parent)
        if (places_[index].next != 0)
            return places_[index].next;
    return 0;
}

ItemIndex TreeItems::previousVisible(ItemIndex index) const
{
    const Item& item = places_[index];
    return item.previous != 0 ? lastVisibleBelow(item.previous) : item.parent;
}

ItemIndex TreeItems::lastVisibleBelow(ItemIndex index) const
{
    while (places_[index].expanded && places_[index].lastChild != 0)
        index = places_[index].lastChild;
    return index;
}

ItemIndex TreeItems::nextWithin(ItemIndex index, ItemIndex top) const
{
    if (places_[index].firstChild != 0)
        return places_[index].firstChild;
    for (; index != top; index = places_[index].parent)
        if (places_[index].next != 0)
            return places_[index].next;
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
    const ItemIndex index = places_.add({});
    places_[index].text = text;
    ++count_;
    return index;
}

void TreeItems::remove(ItemIndex index)
{
    orders_.erase(index);
    (void)places_.remove(index);
    --count_;
}

void TreeItems::link(ItemIndex index, ItemIndex parent, ItemIndex after)
{
    Item& item = places_[index];
    Item& above = places_[parent];
    item.parent = parent;
    item.previous = after;
    item.next = after != 0 ? places_[after].next : above.firstChild;
    (after != 0 ? places_[after].next : above.firstChild) = index;
    (item.next != 0 ? places_[item.next].previous : above.lastChild) = index;
}

void TreeItems::unlink(ItemIndex index)
{
    const Item& item = places_[index];
    Item& above = places_[item.parent];
    (item.previous != 0 ? places_[item.previous].next : above.firstChild) = item.next;
    (item.next != 0 ? places_[item.next].previous : above.lastChild) = item.previous;
}

ItemIndex TreeItems::behindBySearch(ItemIndex parent, std::u16string_view text) const
{
    ItemIndex after = 0;
    for (ItemIndex at = places_[parent].firstChild; at != 0; at = places_[at].next) {
        if (compareWithoutCase(places_[at].text, text) > 0)
            break;
        after = at;
    }
    return after;
}

// Null if the children stand in no order. An index over them is made once and kept up by insertByText.
TreeItems::Order* TreeItems::orderOf(ItemIndex parent)
{
    const auto known = orders_.find(parent);
    if (known != orders_.end())
        return &known->second;
    Order order(ByText{this});
    for (ItemIndex at = places_[parent].firstChild; at != 0; at = places_[at].next) {
        const ItemIndex previous = places_[at].previous;
        if (previous != 0 && compareWithoutCase(places_[previous].text, places_[at].text) > 0)
            return nullptr;
        order.emplace_hint(order.end(), at);
    }
    return &orders_.emplace(parent, std::move(order)).first->second;
}

void TreeItems::dropFromOrder(ItemIndex index)
{
    if (orders_.empty())
        return;
    const auto known = orders_.find(places_[index].parent);
    if (known == orders_.end())
        return;
    const auto equals = known->second.equal_range(std::u16string_view(places_[index].text));
    known->second.erase(std::find(equals.first, equals.second, index));
}

}  // namespace platform::window
