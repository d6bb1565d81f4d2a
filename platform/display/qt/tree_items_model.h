// tree_items_model.h - presents the items of a tree view to the toolkit as an item model.
//
// The tree view is a window of the window core. The model contains only the handles of the items and their order. It
// reads the text and the image of an item from the window core when a view asks for them, which happens only for
// visible rows. So 100,000 items need little memory.
#pragma once

#include "tree_control/tree_display.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace platform::qt {

class TreeItemsModel final : public QAbstractItemModel {
public:
    // `toggle` is called with an item whose check state a screen reader changes.
    TreeItemsModel(HWND tree, std::function<void(HTREEITEM)> toggle, QObject* parent);

    // Applies the removed, inserted and updated items, in this order. Returns true if the button of an updated item
    // appeared or disappeared.
    bool apply(const window::TreeChanges& changes);
    void setPictures(const window::TreePictures& pictures);

    HTREEITEM itemAt(const QModelIndex& index) const;  // null for no item
    QModelIndex indexOf(HTREEITEM item) const;         // invalid for an item that isn't in the model

    QModelIndex index(int row, int column, const QModelIndex& parent) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex&) const override { return 1; }
    // Returns true for an item with a button, even if the item has no children yet. The program may insert the children
    // only when the item is expanded.
    bool hasChildren(const QModelIndex& parent) const override;
    // Returns what `role` asks for: the item's text, its picture, or the meaning of the picture. The meaning is a
    // description, a tip or a check state.
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    struct Node {
        HTREEITEM item = nullptr;
        Node* parent = nullptr;
        int row = 0;
        mutable std::optional<bool> button;  // empty until a view asks
        std::vector<std::unique_ptr<Node>> children;
    };

    Node* find(HTREEITEM item) const;
    const Node& nodeOf(const QModelIndex& index) const;
    void remove(const window::TreeRemoval& removal);
    void insert(const window::TreeRange& range);
    bool update(HTREEITEM item);
    void forget(const Node& node);
    const window::TreeItemState& read(const Node& node) const;
    QIcon icon(int image) const;

    HWND tree_;
    std::function<void(HTREEITEM)> toggle_;
    window::TreePictures pictures_;
    Node root_;
    std::unordered_map<HTREEITEM, Node*> nodes_;
    mutable window::TreeItemState last_;  // the item that was read last: a view asks for several of its properties
    mutable std::unordered_map<int, QIcon> icons_;
};

}  // namespace platform::qt
