#include "tree_items_model.h"

#include "pictures.h"
#include "resources/accessible_names.h"
#include "shown_text.h"

#include <algorithm>
#include <iterator>

namespace platform::qt {

namespace {

using window::TreeItemState;

// Returns the check state for the mark. The result is invalid for an item that can't be marked.
QVariant checkStateOf(quillbox::ShownMark mark)
{
    switch (mark) {
    case quillbox::ShownMark::Unmarked:
        return Qt::Unchecked;
    case quillbox::ShownMark::PartlyMarked:
        return Qt::PartiallyChecked;
    case quillbox::ShownMark::Marked:
        return Qt::Checked;
    case quillbox::ShownMark::None:
        break;
    }
    return {};
}

}  // namespace

TreeItemsModel::TreeItemsModel(HWND tree, std::function<void(HTREEITEM)> toggle, QObject* parent)
    : QAbstractItemModel(parent), tree_(tree), toggle_(std::move(toggle))
{
}

bool TreeItemsModel::apply(const window::TreeChanges& changes)
{
    last_ = {};
    for (const window::TreeRemoval& removal : changes.removed)
        remove(removal);
    for (const window::TreeRange& range : changes.inserted)
        insert(range);
    bool buttonChanged = false;
    for (HTREEITEM item : changes.updated)
        buttonChanged = update(item) || buttonChanged;
    return buttonChanged;
}

void TreeItemsModel::setPictures(const window::TreePictures& pictures)
{
    pictures_ = pictures;
    icons_.clear();
}

HTREEITEM TreeItemsModel::itemAt(const QModelIndex& index) const
{
    return nodeOf(index).item;
}

QModelIndex TreeItemsModel::indexOf(HTREEITEM item) const
{
    const Node* node = item ? find(item) : nullptr;
    return node ? createIndex(node->row, 0, node) : QModelIndex();
}

QModelIndex TreeItemsModel::index(int row, int column, const QModelIndex& parent) const
{
    const Node& above = nodeOf(parent);
    if (row < 0 || column != 0 || static_cast<std::size_t>(row) >= above.children.size())
        return {};
    return createIndex(row, 0, above.children[static_cast<std::size_t>(row)].get());
}

QModelIndex TreeItemsModel::parent(const QModelIndex& index) const
{
    const Node* above = nodeOf(index).parent;
    return above && above != &root_ ? createIndex(above->row, 0, above) : QModelIndex();
}

int TreeItemsModel::rowCount(const QModelIndex& parent) const
{
    return static_cast<int>(nodeOf(parent).children.size());
}

bool TreeItemsModel::hasChildren(const QModelIndex& parent) const
{
    const Node& node = nodeOf(parent);
    if (!node.children.empty() || &node == &root_)
        return !node.children.empty();
    if (!node.button)
        node.button = read(node).hasButton;
    return *node.button;
}

QVariant TreeItemsModel::data(const QModelIndex& index, int role) const
{
    const bool isAsked = role == Qt::DisplayRole || role == Qt::DecorationRole || role == Qt::CheckStateRole ||
                         role == Qt::AccessibleDescriptionRole || role == Qt::ToolTipRole;
    if (!index.isValid() || !isAsked)
        return {};
    const TreeItemState& state = read(nodeOf(index));
    switch (role) {
    case Qt::DisplayRole:
        return toQtLine(state.text);
    case Qt::DecorationRole:
        return icon(state.image);
    case Qt::AccessibleDescriptionRole:
        return pictureName(pictures_.bitmapId, state.image);
    case Qt::ToolTipRole:
        return pictureTip(pictures_.bitmapId, state.image);
    default:
        return checkStateOf(quillbox::shownMark(pictures_.bitmapId, state.image));
    }
}

Qt::ItemFlags TreeItemsModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable : Qt::NoItemFlags;
}

bool TreeItemsModel::setData(const QModelIndex& index, const QVariant&, int role)
{
    if (role == Qt::CheckStateRole && index.isValid())
        toggle_(itemAt(index));
    return false;  // the window core decides, and reports the new state as a change
}

TreeItemsModel::Node* TreeItemsModel::find(HTREEITEM item) const
{
    const auto found = nodes_.find(item);
    return found == nodes_.end() ? nullptr : found->second;
}

const TreeItemsModel::Node& TreeItemsModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? *static_cast<const Node*>(index.constInternalPointer()) : root_;
}

void TreeItemsModel::remove(const window::TreeRemoval& removal)
{
    const Node* first = find(removal.first);
    if (!first || removal.count == 0)
        return;
    Node& above = *first->parent;
    const auto from = above.children.begin() + first->row;
    const std::size_t count =
        std::min(removal.count, static_cast<std::size_t>(std::distance(from, above.children.end())));
    const auto to = from + static_cast<std::ptrdiff_t>(count);
    const int row = first->row;
    beginRemoveRows(indexOf(above.item), row, row + static_cast<int>(count) - 1);
    std::for_each(from, to, [this](const auto& node) { forget(*node); });
    const auto after = above.children.erase(from, to);
    for (auto at = after; at != above.children.end(); ++at)
        (*at)->row -= static_cast<int>(count);
    endRemoveRows();
}

void TreeItemsModel::insert(const window::TreeRange& range)
{
    Node* above = range.parent ? find(range.parent) : &root_;
    const Node* before = find(range.after);
    if (!above || range.items.empty() || (range.after && (!before || before->parent != above)))
        return;
    const int row = before ? before->row + 1 : 0;
    const int count = static_cast<int>(range.items.size());
    std::vector<std::unique_ptr<Node>> nodes;
    nodes.reserve(range.items.size());
    for (HTREEITEM item : range.items) {
        nodes.push_back(std::make_unique<Node>());
        nodes.back()->item = item;
        nodes.back()->parent = above;
        nodes.back()->row = row + static_cast<int>(nodes.size()) - 1;
    }
    beginInsertRows(indexOf(above->item), row, row + count - 1);
    for (const auto& node : nodes)
        nodes_[node->item] = node.get();
    const auto after = above->children.insert(above->children.begin() + row, std::move_iterator(nodes.begin()),
                                              std::move_iterator(nodes.end())) +
                       count;
    for (auto at = after; at != above->children.end(); ++at)
        (*at)->row += count;
    endInsertRows();
}

bool TreeItemsModel::update(HTREEITEM item)
{
    const Node* node = find(item);
    if (!node)
        return false;
    const auto button = std::exchange(node->button, std::nullopt);
    if (button)
        node->button = read(*node).hasButton;
    const QModelIndex index = indexOf(item);
    emit dataChanged(index, index);
    return button != node->button;
}

void TreeItemsModel::forget(const Node& node)
{
    for (const auto& child : node.children)
        forget(*child);
    nodes_.erase(node.item);
}

// Returns the text, image and state of an item. If the window core has deleted the item already, the result has no text
// and no image. In that case the change that removes the item from the model arrives soon.
const TreeItemState& TreeItemsModel::read(const Node& node) const
{
    if (last_.item != node.item && !window::readTreeItem(tree_, node.item, last_)) {
        last_ = {};
        last_.image = -1;
    }
    return last_;
}

QIcon TreeItemsModel::icon(int image) const
{
    if (image < 0)
        return {};
    const auto known = icons_.find(image);
    return known != icons_.end() ? known->second
                                 : icons_.emplace(image, pictureOf(pictures_.bitmapId, image)).first->second;
}

}  // namespace platform::qt
