// tree_items_model.h - the items of a tree as the toolkit's views ask for them.
//
// Holds their handles and their order alone. What an item looks like is asked of the core for the rows on the screen:
// 100,000 items that nobody scrolls to cost their handles.
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
    // `toggle`: a screen reader wants the mark of this item turned over.
    TreeItemsModel(HWND tree, std::function<void(HTREEITEM)> toggle, QObject* parent);

    // Removed, inserted, updated ones, as they came from the core. True: a button came or went.
    bool take(const window::TreeChanges& changes);
    // Which pictures the items show.
    void show(const window::TreePictures& pictures);

    [[nodiscard]] HTREEITEM itemAt(const QModelIndex& index) const;  // null for no item
    [[nodiscard]] QModelIndex indexOf(HTREEITEM item) const;         // invalid for one that isn't there

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] int columnCount(const QModelIndex&) const override { return 1; }
    // An item with a button has, though they may come only when it is expanded.
    [[nodiscard]] bool hasChildren(const QModelIndex& parent) const override;
    // The text, the picture, and for those who don't see it: its meaning, also as a check state.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    struct Node {
        HTREEITEM item = nullptr;
        Node* parent = nullptr;
        int row = 0;
        mutable std::optional<bool> button;  // once somebody has asked
        std::vector<std::unique_ptr<Node>> children;
    };

    [[nodiscard]] Node* find(HTREEITEM item) const;
    [[nodiscard]] const Node& nodeOf(const QModelIndex& index) const;
    void remove(const window::TreeRemoval& removal);
    void insert(const window::TreeRange& range);
    bool update(HTREEITEM item);
    void forget(const Node& node);
    [[nodiscard]] const window::TreeItemState& read(const Node& node) const;
    [[nodiscard]] QIcon icon(int image) const;

    HWND tree_;
    std::function<void(HTREEITEM)> toggle_;
    window::TreePictures pictures_;
    Node root_;
    std::unordered_map<HTREEITEM, Node*> known_;
    mutable window::TreeItemState last_;  // a view asks several things of one item in a row
    mutable std::unordered_map<int, QIcon> icons_;
};

}  // namespace platform::qt
