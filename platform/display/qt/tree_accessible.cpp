// tree_accessible.cpp - presents the tree of the main window to screen readers.
//
// The toolkit's accessible interface of a tree has no state for partly marked items. The interface in this file has
// such a state. It numbers the rows in the order of display, like a table with one column. An item with a collapsed
// ancestor has no number.

#include "tree_items_model.h"
#include "view_makers.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHeaderView>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QScrollBar>
#include <QTreeView>

#include <algorithm>
#include <unordered_map>

namespace platform::qt {

namespace {

// In its events for screen readers, the view counts the header as child 0, even if the header is hidden.
constexpr int HeaderChildren = 1;

// Returns how far the view is scrolled down.
int scrolledPixels(const QTreeView& view, int rowHeight)
{
    const int value = view.verticalScrollBar()->value();
    return view.verticalScrollMode() == QAbstractItemView::ScrollPerItem ? value * rowHeight : value;
}

// Returns the number of the item's row, or -1 if an ancestor of the item is collapsed. All rows have the same height,
// so the number is computed from the row's position, without counting the rows above.
int rowOf(const QTreeView& view, const QModelIndex& index)
{
    const QRect rect = view.visualRect(index);
    return rect.height() > 0 ? (rect.top() + scrolledPixels(view, rect.height())) / rect.height() : -1;
}

QModelIndex indexOfRow(const QTreeView& view, int row)
{
    const int height = view.sizeHintForIndex(view.model()->index(0, 0)).height();
    if (row < 0 || height <= 0)
        return {};
    return view.indexAt({view.viewport()->width() / 2, row * height + height / 2 - scrolledPixels(view, height)});
}

QModelIndex lastIndex(const QTreeView& view)
{
    QModelIndex last;
    while (!last.isValid() || view.isExpanded(last)) {
        const int rows = view.model()->rowCount(last);
        if (rows == 0)
            break;
        last = view.model()->index(rows - 1, 0, last);
    }
    return last;
}

class TreeItemAccessible final : public QAccessibleInterface,
                                 public QAccessibleTableCellInterface,
                                 public QAccessibleActionInterface {
public:
    TreeItemAccessible(QTreeView* view, const QModelIndex& index) : view_(view), index_(index) {}

    QModelIndex index() const { return index_; }

    bool isValid() const override { return view_ && index_.isValid(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(view_); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::TreeItem; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text text) const override
    {
        if (text == QAccessible::Name)
            return index_.data(Qt::DisplayRole).toString();
        return text == QAccessible::Description ? index_.data(Qt::AccessibleDescriptionRole).toString() : QString();
    }
    QRect rect() const override
    {
        const QRect rect = isValid() ? view_->visualRect(index_) : QRect();
        return rect.isNull() ? rect : rect.translated(view_->viewport()->mapToGlobal(QPoint(0, 0)));
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const QVariant mark = index_.data(Qt::CheckStateRole);
        state.checkable = mark.isValid();
        state.checked = mark == Qt::Checked;
        state.checkStateMixed = mark == Qt::PartiallyChecked;
        state.selectable = true;
        state.selected = isSelected();
        state.focusable = true;
        state.focused = view_->currentIndex() == index_;
        state.expandable = view_->model()->hasChildren(index_);
        state.expanded = view_->isExpanded(index_);
        state.invisible = !view_->viewport()->rect().intersects(view_->visualRect(index_));
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TableCellInterface)
            return static_cast<QAccessibleTableCellInterface*>(this);
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }

    bool isSelected() const override { return isValid() && view_->selectionModel()->isSelected(index_); }
    QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return 0; }
    int rowIndex() const override { return isValid() ? rowOf(*view_, index_) : -1; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

    QStringList actionNames() const override { return {toggleAction()}; }
    void doAction(const QString& name) override
    {
        if (name == toggleAction() && isValid())
            view_->model()->setData(index_, {}, Qt::CheckStateRole);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<QTreeView> view_;
    QPersistentModelIndex index_;
};

class TreeAccessible final : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit TreeAccessible(QTreeView* view) : QAccessibleWidget(view, QAccessible::Tree), view_(*view) {}
    TreeAccessible(const TreeAccessible&) = delete;
    TreeAccessible& operator=(const TreeAccessible&) = delete;

    int childCount() const override { return HeaderChildren + rowCount(); }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(view_.header())
                          : item(indexOfRow(view_, index - HeaderChildren));
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        return item(view_.indexAt(view_.viewport()->mapFromGlobal(QPoint(x, y))));
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (const auto* item = dynamic_cast<const TreeItemAccessible*>(child)) {
            const int row = item->table() == this ? item->rowIndex() : -1;
            return row < 0 ? -1 : row + HeaderChildren;
        }
        return child && child->object() == view_.header() ? 0 : -1;
    }
    QAccessibleInterface* focusChild() const override { return item(view_.currentIndex()); }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    // Makes a new accessible object for the current item and reports that this object has the focus.
    void reportFocusAgain()
    {
        const QModelIndex current = view_.currentIndex();
        const auto known = items_.find(static_cast<const TreeItemsModel*>(view_.model())->itemAt(current));
        if (known != items_.end()) {
            QAccessible::deleteAccessibleInterface(known->second);
            items_.erase(known);
        }
        if (QAccessibleInterface* renewed = item(current)) {
            QAccessibleEvent focus(renewed, QAccessible::Focus);
            QAccessible::updateAccessibility(&focus);
        }
    }

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override
    {
        return column == 0 ? item(indexOfRow(view_, row)) : nullptr;
    }
    int selectedCellCount() const override { return static_cast<int>(selected().size()); }
    QList<QAccessibleInterface*> selectedCells() const override
    {
        QList<QAccessibleInterface*> cells;
        for (const QModelIndex& index : selected())
            cells += item(index);
        return cells;
    }
    QString columnDescription(int) const override { return {}; }
    QString rowDescription(int) const override { return {}; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return selectedCellCount(); }
    int columnCount() const override { return 1; }
    int rowCount() const override { return rowOf(view_, lastIndex(view_)) + 1; }
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override
    {
        QList<int> rows;
        for (const QModelIndex& index : selected())
            rows += rowOf(view_, index);
        return rows;
    }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override { return view_.selectionModel()->isSelected(indexOfRow(view_, row)); }
    bool selectRow(int row) override
    {
        const QModelIndex index = indexOfRow(view_, row);
        view_.selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
        return index.isValid();
    }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }

    // The event contains row numbers within a parent item, but doesn't say which item is the parent. So this function
    // checks for each known item whether it still exists.
    void modelChange(QAccessibleTableModelChangeEvent* event) override
    {
        using Event = QAccessibleTableModelChangeEvent;
        if (event->modelChangeType() == Event::ModelReset || event->modelChangeType() == Event::RowsRemoved)
            std::erase_if(items_, [](const auto& known) {
                const QAccessibleInterface* item = QAccessible::accessibleInterface(known.second);
                const bool isGone = !item || !item->isValid();
                if (isGone)
                    QAccessible::deleteAccessibleInterface(known.second);
                return isGone;
            });
    }

private:
    ~TreeAccessible() override
    {
        for (const auto& known : items_)
            QAccessible::deleteAccessibleInterface(known.second);
    }

    QModelIndexList selected() const { return view_.selectionModel()->selectedIndexes(); }

    QAccessibleInterface* item(const QModelIndex& index) const
    {
        if (!index.isValid())
            return nullptr;
        QAccessible::Id& id = items_[static_cast<const TreeItemsModel*>(index.model())->itemAt(index)];
        auto* known = static_cast<TreeItemAccessible*>(QAccessible::accessibleInterface(id));
        if (known && known->index() == index)
            return known;
        if (known)  // `known` is of a deleted item whose handle is in use again
            QAccessible::deleteAccessibleInterface(id);
        id = QAccessible::registerAccessibleInterface(new TreeItemAccessible(&view_, index));
        return QAccessible::accessibleInterface(id);
    }

    QTreeView& view_;
    mutable std::unordered_map<HTREEITEM, QAccessible::Id> items_;  // only the items that screen readers have asked for
};

QAccessibleInterface* makeAccessible(const QString& className, QObject* object)
{
    auto* view = className == u"QTreeView" ? qobject_cast<QTreeView*>(object) : nullptr;
    return view && dynamic_cast<TreeItemsModel*>(view->model()) ? new TreeAccessible(view) : nullptr;
}

}  // namespace

void reportCurrentAgain(QTreeView& tree)
{
    if (auto* accessible = dynamic_cast<TreeAccessible*>(QAccessible::queryAccessibleInterface(&tree)))
        accessible->reportFocusAgain();
}

void useTreeAccessible()
{
    QAccessible::installFactory(makeAccessible);
}

}  // namespace platform::qt
