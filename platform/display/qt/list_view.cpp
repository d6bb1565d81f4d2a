// list_view.cpp - a list box. The rows, the selection and the row that has the keyboard are the core's.

#include "list_view.h"

#include "focus_outline.h"

#include "ce/controls.h"

#include <QAbstractListModel>
#include <QItemSelectionModel>
#include <QListView>
#include <QMouseEvent>

#include <algorithm>
#include <vector>

namespace platform::qt {

namespace {

using window::Change;
using window::ListRow;
using window::WindowState;

class Rows final : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole || !index.isValid())
            return {};
        return toQtLine(rows_[static_cast<std::size_t>(index.row())].text);
    }

    void replace(std::vector<ListRow> rows)
    {
        beginResetModel();
        rows_ = std::move(rows);
        endResetModel();
    }

private:
    std::vector<ListRow> rows_;
};

// The one hook for "a click does not select by itself": mouse, keys and screen reader all end here. What is
// asked for goes to the core as a click on the row; only what the core says is taken over.
class FollowingSelection final : public QItemSelectionModel {
public:
    FollowingSelection(QAbstractItemModel* model, std::function<void(int)> wish)
        : QItemSelectionModel(model, model), wish_(std::move(wish))
    {
    }

    void select(const QModelIndex& index, SelectionFlags flags) override
    {
        if (index.isValid() && flags != NoUpdate && isSelected(index) != wantsSelected(index, flags))
            wish_(index.row());
    }
    void select(const QItemSelection& selection, SelectionFlags flags) override
    {
        const QModelIndexList indexes = selection.indexes();
        if (indexes.size() == 1)
            select(indexes.front(), flags);
    }
    void setCurrentIndex(const QModelIndex&, SelectionFlags) override {}

    void take(const QItemSelection& selection, const QModelIndex& current)
    {
        QItemSelectionModel::select(selection, ClearAndSelect);
        QItemSelectionModel::setCurrentIndex(current, NoUpdate);
    }

private:
    [[nodiscard]] bool wantsSelected(const QModelIndex& index, SelectionFlags flags) const
    {
        if (flags & Toggle)
            return !isSelected(index);
        return (flags & Select) != 0;
    }

    std::function<void(int)> wish_;
};

QItemSelection selectionOf(const Rows& model, const std::vector<ListRow>& rows)
{
    QItemSelection selection;
    const int count = static_cast<int>(rows.size());
    for (int row = 0; row < count; ++row) {
        if (!rows[static_cast<std::size_t>(row)].selected)
            continue;
        const int first = row;
        while (row + 1 < count && rows[static_cast<std::size_t>(row) + 1].selected)
            ++row;
        selection.append(QItemSelectionRange(model.index(first), model.index(row)));
    }
    return selection;
}

class ListBoxView final : public QListView, public View {
public:
    ListBoxView(const WindowState& state, const Courier& courier, QWidget* parent)
        : QListView(parent), View(state.window, courier), rows_(this),
          selection_(&rows_, [this](int row) { this->courier().click(this->window(), row); }), outline_(this)
    {
        setModel(&rows_);
        setSelectionModel(&selection_);
        setUniformItemSizes(true);
        setEditTriggers(NoEditTriggers);
        setSelectionMode(state.style & LBS_MULTIPLESEL ? MultiSelection : SingleSelection);
        setTextElideMode(Qt::ElideNone);
        setHorizontalScrollMode(ScrollPerPixel);
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (!changes.has(Change::Rows) && !changes.has(Change::Selection))
            return;
        std::vector<ListRow> rows = window::listRows(this->window());
        const bool sameRows = !changes.has(Change::Rows) && rows_.rowCount({}) == static_cast<int>(rows.size());
        if (!sameRows)
            rows_.replace(rows);
        const QModelIndex caret = rows_.index(state.caretRow);
        selection_.take(selectionOf(rows_, rows), caret);
        if (caret.isValid())
            scrollTo(caret);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        pressed_ = rowAt(event->position());
        courier().click(this->window(), pressed_);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton)
            courier().doubleClick(this->window(), rowAt(event->position()));
    }
    // A single selection goes along with a pointer that is dragged over the rows.
    void mouseMoveEvent(QMouseEvent* event) override
    {
        const int row = rowAt(event->position());
        if (!(event->buttons() & Qt::LeftButton) || selectionMode() != SingleSelection || row < 0 || row == pressed_)
            return;
        pressed_ = row;
        courier().click(this->window(), row);
    }
    void mouseReleaseEvent(QMouseEvent*) override {}
    // The dialog hands keys to the core.
    void keyPressEvent(QKeyEvent* event) override { event->ignore(); }

private:
    [[nodiscard]] int rowAt(QPointF point) const { return indexAt(point.toPoint()).row(); }

    Rows rows_;
    FollowingSelection selection_;
    FocusOutline outline_;
    int pressed_ = -1;
};

}  // namespace

View* makeListView(const WindowState& state, const Courier& courier, QWidget* parent)
{
    return new ListBoxView(state, courier, parent);
}

}  // namespace platform::qt
