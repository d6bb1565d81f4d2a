// list_view.cpp - a list box. The rows, the selection and the row that has the keyboard are the core's.

#include "focus_outline.h"
#include "keys.h"
#include "view_makers.h"

#include "ce/controls.h"
#include "controls/list_display.h"

#include <QAbstractListModel>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QListView>
#include <QMouseEvent>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QToolTip>

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace platform::qt {

namespace {

using window::Change;
using window::ListRow;
using window::WindowState;

constexpr int StepLetters = 8;  // of one step sideways

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

    [[nodiscard]] const std::vector<ListRow>& all() const { return rows_; }

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

// What its characters need alone, added up. Off by little, but for scripts whose characters join or stack and for those
// of two units: there it is more than the text needs.
class RoughWidth {
public:
    explicit RoughWidth(const QFontMetrics& metrics) : metrics_(metrics) {}

    int operator()(const std::u16string& text)
    {
        int width = 0;
        for (const char16_t character : text) {
            int& known = widthOf_[character];
            if (known < 0)
                known = metrics_.horizontalAdvance(toQtLine(std::u16string(1, character)));
            width += known;
        }
        return width;
    }

private:
    QFontMetrics metrics_;
    std::vector<int> widthOf_ = std::vector<int>(0x10000, -1);
};

bool isPlain(const std::u16string& text)
{
    constexpr char16_t FirstMark = 0x300;
    return std::ranges::all_of(text, [](char16_t unit) { return unit < FirstMark; });
}

// To lay out 100,000 texts takes seconds, to add up their characters a few milliseconds: the widest by that are worth
// a closer look. Those that aren't plain seem wider than they are, and must not stand before all others.
std::vector<int> likelyWidest(const std::vector<ListRow>& rows, const QFontMetrics& metrics)
{
    constexpr std::ptrdiff_t FewPlain = 8;
    constexpr std::ptrdiff_t FewOthers = 500;
    RoughWidth roughWidth(metrics);
    std::vector<std::pair<int, int>> plain;
    std::vector<std::pair<int, int>> others;
    for (int at = 0; const ListRow& row : rows)
        (isPlain(row.text) ? plain : others).emplace_back(roughWidth(row.text), at++);
    std::vector<int> widest;
    const auto takeWidest = [&widest](auto& widths, std::ptrdiff_t most) {
        const auto end = widths.begin() + std::min(most, std::ssize(widths));
        std::partial_sort(widths.begin(), end, widths.end(), std::greater());
        std::transform(widths.begin(), end, std::back_inserter(widest), [](const auto& each) { return each.second; });
    };
    takeWidest(plain, FewPlain);
    takeWidest(others, FewOthers);
    return widest;
}

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
        // The dialog hands all other keys to the core, to which Left and Right mean Up and Down.
        for (const Qt::Key arrow : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right}) {
            auto* scroll = new QShortcut(Qt::CTRL | arrow, this, nullptr, nullptr, Qt::WidgetShortcut);
            connect(scroll, &QShortcut::activated, this, [this, arrow] { scrollByArrow(*this, arrow); });
        }
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (!changes.has(Change::Rows) && !changes.has(Change::Selection))
            return;
        extent_ = state.extent;
        placeWidth_ = state.rectangle.right - state.rectangle.left;
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

    bool viewportEvent(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip)
            return QListView::viewportEvent(event);
        showWhole(static_cast<const QHelpEvent&>(*event));
        return true;
    }

    void doItemsLayout() override
    {
        widest_ = 0;
        for (const int row : likelyWidest(rows_.all(), fontMetrics()))
            widest_ = std::max(widest_, sizeHintForIndex(rows_.index(row)).width());
        horizontalScrollBar()->setSingleStep(StepLetters * fontMetrics().averageCharWidth());
        QListView::doItemsLayout();
    }
    // The toolkit takes all rows for as wide as the last.
    void updateGeometries() override
    {
        const int asked = placeWidth_ > 0 ? extent_ * width() / placeWidth_ : 0;
        const bool allFit = widest_ <= viewport()->width();
        resizeContents(allFit ? widest_ : std::max(widest_, asked), contentsSize().height());
        QListView::updateGeometries();
    }

    // The pointer is over another row now.
    void scrollContentsBy(int dx, int dy) override
    {
        QListView::scrollContentsBy(dx, dy);
        QToolTip::hideText();
    }

private:
    [[nodiscard]] int rowAt(QPointF point) const { return indexAt(point.toPoint()).row(); }

    [[nodiscard]] bool isCut(const QModelIndex& index) const
    {
        const QRect row = visualRect(index);
        const QSize needed(sizeHintForIndex(index).width(), row.height());
        const QRect text = QStyle::alignedRect(layoutDirection(), Qt::AlignLeft | Qt::AlignTop, needed, row);
        return text.left() < 0 || text.right() >= viewport()->width();
    }

    // A tip with the text of a row that is cut.
    void showWhole(const QHelpEvent& event)
    {
        const QModelIndex index = indexAt(event.pos());
        if (!index.isValid() || !isCut(index)) {
            QToolTip::hideText();
            return;
        }
        const QString row = index.data().toString();
        const int screenWidth = screen()->availableGeometry().width();
        const bool isOneLine = fontMetrics().horizontalAdvance(row) < screenWidth / 2;
        const QString lines = isOneLine ? row : breakable(row, fontMetrics(), screenWidth);
        // Marked as a text with marks: otherwise a name might be taken for one.
        const QString tip = QStringLiteral("<p style='white-space:%1'>%2</p>")
                                .arg(isOneLine ? "pre" : "pre-wrap", lines.toHtmlEscaped());
        QToolTip::showText(event.globalPos(), tip, viewport(), visualRect(index));
    }

    Rows rows_;
    FollowingSelection selection_;
    FocusOutline outline_;
    int pressed_ = -1;
    int widest_ = 0;      // pixels
    int extent_ = 0;      // virtual pixels, as is
    int placeWidth_ = 0;  // the box's own width
};

}  // namespace

View* makeListView(const WindowState& state, const Courier& courier, QWidget* parent)
{
    return new ListBoxView(state, courier, parent);
}

}  // namespace platform::qt
