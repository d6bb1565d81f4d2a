#include "tree_marking.h"

#include "resources/accessible_names.h"
#include "resources/commands.h"

#include "ce/window.h"

namespace platform::qt {

using quillbox::ShownMark;

TreeMarking::TreeMarking(HWND tree, HTREEITEM item) : tree_(tree)
{
    if (!item || !window::readTreeItem(tree, item, state_))
        return;
    const WORD bitmap = window::treePictures(tree).bitmapId;
    const ShownMark mark = quillbox::shownMark(bitmap, state_.image);
    isFolder_ = quillbox::isFolderThatTakesMarks(bitmap, state_.image);
    // The top items "Databases" and "Files" show what is marked below them, and can't be marked themselves.
    canClick_ = !isFolder_ && mark != ShownMark::None && (state_.level > 0 || !state_.hasButton);
    isMarked_ = (isFolder_ && mark == ShownMark::PartlyMarked) || (canClick_ && mark == ShownMark::Marked);
}

void TreeMarking::set(const UserInput& input, bool marked) const
{
    if (isFolder_)
        input.treeCommand(tree_, state_.item, marked ? quillbox::MarkFolder : quillbox::UnmarkFolder);
    else if (canClick_ && marked != isMarked_)
        input.treeClick(tree_, state_.item, window::TreePart::Label);
}

void TreeMarking::expandAllBelow(const UserInput& input) const
{
    // treeKey() first clicks the item to select it. An item that can be expanded is a folder or a top item. A click on
    // such an item marks nothing, so here the click only selects.
    if (canExpand())
        input.treeKey(tree_, state_.item, VK_MULTIPLY);
}

}  // namespace platform::qt
