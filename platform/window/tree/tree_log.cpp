#include "tree_log.h"

#include <utility>

namespace platform::window {

namespace {

bool isNew(const TreeItems& items, ItemIndex index)
{
    return index != 0 && !items[index].shown;
}

// Adds to `changes` the range of adjacent new siblings that contains `index`. If their parent is new too, adds the
// parent's range first.
void deliver(TreeItems& items, ItemIndex index, TreeChanges& changes)
{
    const ItemIndex parent = items[index].parent;
    if (isNew(items, parent))
        deliver(items, parent, changes);
    while (isNew(items, items[index].previous))
        index = items[index].previous;
    TreeRange range{items.handleOf(parent), items.handleOf(items[index].previous), {}};
    for (; isNew(items, index); index = items[index].next) {
        items[index].shown = true;
        range.items.push_back(items.handleOf(index));
        if (items[index].expanded)
            changes.folded.push_back({items.handleOf(index), true});
    }
    changes.inserted.push_back(std::move(range));
}

}  // namespace

void TreeLog::inserted(TreeItems& items, ItemIndex index)
{
    // `inserted_` needs only one item of each range of adjacent new siblings, because deliver() adds the whole range.
    // If a neighbour of this item is new, this item joins the neighbour's range, and `inserted_` has an item of that
    // range already.
    if (asked_ && !isNew(items, items[index].previous) && !isNew(items, items[index].next))
        inserted_.push_back(items.handleOf(index));
}

void TreeLog::removing(TreeItems& items, ItemIndex index)
{
    if (!asked_)
        return;
    const Item& item = items[index];
    if (!item.shown) {
        // The item belongs to a range of adjacent new siblings, and may be the only item of this range in `inserted_`.
        // So those of its neighbours that are new are added. deliver() finds the whole range from any item in it.
        for (const ItemIndex neighbour : {item.previous, item.next}) {
            if (isNew(items, neighbour))
                inserted_.push_back(items.handleOf(neighbour));
        }
        return;
    }
    const HTREEITEM handle = items.handleOf(index);
    const HTREEITEM parent = items.handleOf(item.parent);
    const bool goesOn = !removed_.empty() && removed_.back().parent == parent;
    if (goesOn && handle == afterRemoved_) {
        ++removed_.back().count;
        afterRemoved_ = items.handleOf(item.next);
    } else if (goesOn && handle == beforeRemoved_) {
        ++removed_.back().count;
        removed_.back().first = handle;
        beforeRemoved_ = items.handleOf(item.previous);
    } else {
        removed_.push_back({parent, handle, 1});
        afterRemoved_ = items.handleOf(item.next);
        beforeRemoved_ = items.handleOf(item.previous);
    }
}

void TreeLog::updated(TreeItems& items, ItemIndex index)
{
    Item& item = items[index];
    if (index != 0 && item.shown && !std::exchange(item.updateNoted, true))
        updated_.push_back(items.handleOf(index));
}

void TreeLog::folded(TreeItems& items, ItemIndex index)
{
    Item& item = items[index];
    if (item.shown && !std::exchange(item.foldNoted, true))
        folded_.push_back(items.handleOf(index));
}

TreeChanges TreeLog::take(TreeItems& items)
{
    TreeChanges changes;
    changes.toShow = std::exchange(toShow_, nullptr);
    if (!std::exchange(asked_, true)) {
        takeEverything(items, changes);
        return changes;
    }
    changes.removed = std::exchange(removed_, {});
    afterRemoved_ = beforeRemoved_ = nullptr;
    for (const HTREEITEM handle : std::exchange(inserted_, {})) {
        if (const ItemIndex index = items.find(handle); isNew(items, index))
            deliver(items, index, changes);
    }
    for (const HTREEITEM handle : std::exchange(updated_, {})) {
        if (const ItemIndex index = items.find(handle); index != 0) {
            items[index].updateNoted = false;
            changes.updated.push_back(handle);
        }
    }
    for (const HTREEITEM handle : std::exchange(folded_, {})) {
        if (const ItemIndex index = items.find(handle); index != 0) {
            items[index].foldNoted = false;
            changes.folded.push_back({handle, items[index].expanded});
        }
    }
    return changes;
}

void TreeLog::startOver(TreeItems& items)
{
    *this = TreeLog();
    for (ItemIndex index = items.nextWithin(0, 0); index != 0; index = items.nextWithin(index, 0))
        items[index].shown = items[index].updateNoted = items[index].foldNoted = false;
}

// Adds all new items to `changes.inserted`. nextWithin() visits parents before their children, so they are added in
// that order.
void TreeLog::takeEverything(TreeItems& items, TreeChanges& changes)
{
    for (ItemIndex index = items.nextWithin(0, 0); index != 0; index = items.nextWithin(index, 0))
        if (isNew(items, index))
            deliver(items, index, changes);
}

}  // namespace platform::window
