// Computes the positions of a tree's rows for a program that asks which item is at a point. The display computes the
// positions of its own rows.
//
// All rows have the same height, and the first row in view shows TreeViewState::top. Only rows in view are read, so the
// cost doesn't depend on the number of items.
#include "tree_control.h"
#include "window/image_lists.h"
#include "window/window_geometry.h"

#include <algorithm>

namespace platform::window {

namespace {

constexpr int RowHeight = 16;
constexpr int LevelWidth = 19;  // the width of one indentation, and of an item's button
constexpr int CharacterWidth = 6;

ItemIndex topOf(const TreeViewState& tree)
{
    const ItemIndex top = tree.items.nearestVisible(tree.items.find(tree.top));
    return top != 0 ? top : tree.items.firstVisible();
}

// Returns the item that is `row` rows below the first row in view, or 0 if there are fewer rows.
ItemIndex itemInRow(const TreeViewState& tree, int row)
{
    ItemIndex at = topOf(tree);
    for (; row > 0 && at != 0; --row)
        at = tree.items.nextVisible(at);
    return at;
}

// Returns the row of the item, counted from the first row in view, or -1 if the item isn't in view.
int rowOf(const Window& window, const TreeViewState& tree, ItemIndex index) REQUIRES(coreMutex)
{
    ItemIndex at = topOf(tree);
    for (int row = 0; row < rowsInView(window) && at != 0; ++row, at = tree.items.nextVisible(at))
        if (at == index)
            return row;
    return -1;
}

// The x coordinates at which the parts of an item begin, and the end of the label.
struct Parts {
    int button;
    int icon;
    int label;
    int right;
};

Parts partsOf(const TreeViewState& tree, ItemIndex index)
{
    Parts parts{};
    parts.button = tree.items.levelOf(index) * LevelWidth;
    parts.icon = parts.button + LevelWidth;
    parts.label = parts.icon + imageSizeOf(tree.images).width;
    parts.right = parts.label + std::max(static_cast<int>(tree.items[index].text.size()), 1) * CharacterWidth;
    return parts;
}

UINT flagsAt(const Parts& parts, int x, bool hasButton)
{
    if (x < parts.button || (x < parts.icon && !hasButton))
        return TVHT_ONITEMINDENT;
    if (x < parts.icon)
        return TVHT_ONITEMBUTTON;
    if (x < parts.label)
        return TVHT_ONITEMICON;
    return x < parts.right ? TVHT_ONITEMLABEL : TVHT_ONITEMRIGHT;
}

int xOn(const Parts& parts, TreePart part)
{
    switch (part) {
    case TreePart::Indent:
        return parts.button / 2;
    case TreePart::Button:
        return parts.button + LevelWidth / 2;
    case TreePart::Icon:
        return parts.icon;
    case TreePart::Right:
        return parts.right + CharacterWidth;
    default:
        return parts.label;
    }
}

}  // namespace

int rowsInView(const Window& window)
{
    return std::max(static_cast<int>(window.rectangle.bottom - window.rectangle.top) / RowHeight, 1);
}

void bringIntoView(const Window& window, TreeViewState& tree, ItemIndex index)
{
    if (rowOf(window, tree, index) < 0)
        tree.top = tree.items.handleOf(index);
}

POINT pointOn(const Window& window, TreeViewState& tree, ItemIndex index, TreePart part)
{
    POINT point{0, 0};
    int row = 0;
    if (index != 0) {
        bringIntoView(window, tree, index);
        row = rowOf(window, tree, index);
        point.x = xOn(partsOf(tree, index), part);
    } else {
        while (row < rowsInView(window) && itemInRow(tree, row) != 0)
            ++row;
    }
    point.y = row * RowHeight + RowHeight / 2;
    const POINT origin = originOf(window);
    return {point.x + origin.x, point.y + origin.y};
}

// A point to the right of the view can hit a label. The display can scroll its rows sideways, but the positions here
// are those of unscrolled rows. So if the user scrolls sideways and clicks a label that was outside the view before,
// the point is to the right of the view.
ItemIndex hitTest(const Window& window, const TreeViewState& tree, TVHITTESTINFO& hit)
{
    hit.hItem = nullptr;
    const int height = std::max(static_cast<int>(window.rectangle.bottom - window.rectangle.top), RowHeight);
    hit.flags =
        (hit.pt.y < 0 ? TVHT_ABOVE : 0) | (hit.pt.y >= height ? TVHT_BELOW : 0) | (hit.pt.x < 0 ? TVHT_TOLEFT : 0);
    if (hit.flags != 0)
        return 0;
    const ItemIndex index = itemInRow(tree, hit.pt.y / RowHeight);
    hit.hItem = tree.items.handleOf(index);
    hit.flags = index == 0 ? TVHT_NOWHERE : flagsAt(partsOf(tree, index), hit.pt.x, tree.items[index].hasButton());
    return index;
}

}  // namespace platform::window
