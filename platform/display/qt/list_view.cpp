#include "detail_delegate.h"
#include "focus_outline.h"
#include "keys.h"
#include "view_makers.h"

#include "ce/controls.h"
#include "controls/list_display.h"

#include <QAbstractListModel>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QLabel>
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

constexpr int StepLetters = 8;  // one step of the horizontal scroll bar, in average letters
constexpr int CountMargin = 2;  // margin of the text with the number of selected rows, in pixels

class Rows final : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid())
            return {};
        const ListRow& row = rows_[static_cast<std::size_t>(index.row())];
        switch (role) {
        case Qt::DisplayRole:
            return toQtLine(row.text);
        case DetailRole:
        case Qt::AccessibleDescriptionRole:
            return toQtLine(row.detail);
        default:
            return {};
        }
    }

    const std::vector<ListRow>& all() const { return rows_; }

    void replace(std::vector<ListRow> rows)
    {
        beginResetModel();
        rows_ = std::move(rows);
        endResetModel();
    }

private:
    std::vector<ListRow> rows_;
};

// A selection that changes only when the window core changes the selection of the list box. The toolkit and screen
// readers call select(). If the call would change whether the row is selected, select() only posts a click on the row
// to the window core. follow() shows the result. setCurrentIndex() does nothing, because only the window core moves the
// current row.
class ListSelection final : public QItemSelectionModel {
public:
    ListSelection(QAbstractItemModel* model, std::function<void(int)> request)
        : QItemSelectionModel(model, model), request_(std::move(request))
    {
    }

    void select(const QModelIndex& index, SelectionFlags flags) override
    {
        if (index.isValid() && flags != NoUpdate && isSelected(index) != isToBeSelected(index, flags))
            request_(index.row());
    }
    void select(const QItemSelection& selection, SelectionFlags flags) override
    {
        const QModelIndexList indexes = selection.indexes();
        if (indexes.size() == 1)
            select(indexes.front(), flags);
    }
    void setCurrentIndex(const QModelIndex&, SelectionFlags) override {}

    void follow(const QItemSelection& selection, const QModelIndex& current)
    {
        QItemSelectionModel::select(selection, ClearAndSelect);
        QItemSelectionModel::setCurrentIndex(current, NoUpdate);
    }

private:
    bool isToBeSelected(const QModelIndex& index, SelectionFlags flags) const
    {
        if (flags & Toggle)
            return !isSelected(index);
        return (flags & Select) != 0;
    }

    std::function<void(int)> request_;
};

// Estimates the width of a text as the sum of the widths of its UTF-16 units. The sum is nearly exact for most scripts.
// It is too large if characters join or combine, or if a character has two units.
class SummedWidth {
public:
    explicit SummedWidth(const QFontMetrics& metrics) : metrics_(metrics) {}

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

// Returns rows of which one is probably the widest. The layout of 100,000 texts takes seconds, but SummedWidth takes
// only milliseconds for them. So this function chooses rows by SummedWidth, and the caller lays out only those rows.
// For a text that isn't plain (see isPlain), the sum can be much too large. Such texts would displace all plain
// texts from the result. So the widest rows with plain texts and the widest other rows are chosen separately.
std::vector<int> likelyWidest(const std::vector<ListRow>& rows, const QFontMetrics& metrics)
{
    constexpr std::ptrdiff_t FewPlain = 8;
    constexpr std::ptrdiff_t FewOthers = 500;
    SummedWidth summedWidth(metrics);
    std::vector<std::pair<int, int>> plain;
    std::vector<std::pair<int, int>> others;
    for (int at = 0; const ListRow& row : rows)
        (isPlain(row.text) ? plain : others).emplace_back(summedWidth(row.text), at++);
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
    ListBoxView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QListView(parent), View(state.window, input), rows_(this),
          selection_(&rows_, [this](int row) { this->input().click(this->window(), row); }), delegate_(this),
          outline_(this)
    {
        count_.hide();
        count_.setMargin(CountMargin);
        count_.setBackgroundRole(QPalette::Window);  // otherwise it looks like one more row
        count_.setAutoFillBackground(true);
        setModel(&rows_);
        setItemDelegate(&delegate_);
        setSelectionModel(&selection_);
        setUniformItemSizes(true);
        setEditTriggers(NoEditTriggers);
        setSelectionMode(state.style & LBS_MULTIPLESEL ? MultiSelection : SingleSelection);
        setTextElideMode(Qt::ElideNone);
        setHorizontalScrollMode(ScrollPerPixel);
        // Ctrl with an arrow key scrolls the list. The dialog sends all other keys to the window core. For Up and Left
        // the window core moves the current row up. For Down and Right it moves the current row down.
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
        virtualWidth_ = state.rectangle.right - state.rectangle.left;
        std::vector<ListRow> rows = window::listRows(this->window());
        const bool sameRows = !changes.has(Change::Rows) && rows_.rowCount({}) == static_cast<int>(rows.size());
        if (!sameRows)
            rows_.replace(rows);
        const QModelIndex caret = rows_.index(state.caretRow);
        selection_.follow(selectionOf(rows_, rows), caret);
        if (selectionMode() == MultiSelection)
            showCount(std::ranges::count_if(rows, &ListRow::selected));
        if (caret.isValid())
            scrollTo(caret);
    }

    // If rows have details, returns the width at which the widest row fits, because in the template the list is too
    // narrow for such rows. Otherwise returns 0.
    int wantedWidth() override
    {
        const bool hasDetails = detailColumn() > 0;
        if (hasDetails)
            doItemsLayout();
        return hasDetails ? widest_ + 2 * frameWidth() + verticalScrollBar()->sizeHint().width() : 0;
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        pressed_ = rowAt(event->position());
        input().click(this->window(), pressed_);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton)
            input().doubleClick(this->window(), rowAt(event->position()));
    }
    // A single selection follows the pointer while the button is pressed.
    void mouseMoveEvent(QMouseEvent* event) override
    {
        const int row = rowAt(event->position());
        if (!(event->buttons() & Qt::LeftButton) || selectionMode() != SingleSelection || row < 0 || row == pressed_)
            return;
        pressed_ = row;
        input().click(this->window(), row);
    }
    void mouseReleaseEvent(QMouseEvent*) override {}
    // Leaves the key to the dialog, which sends it to the window core.
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
        delegate_.setColumn(detailColumn());
        for (const int row : likelyWidest(rows_.all(), fontMetrics()))
            widest_ = std::max(widest_, sizeHintForIndex(rows_.index(row)).width());
        horizontalScrollBar()->setSingleStep(StepLetters * fontMetrics().averageCharWidth());
        QListView::doItemsLayout();
    }
    // Sets the width of the content that the user can scroll. The toolkit alone would use the width of the last row,
    // even if other rows are wider.
    void updateGeometries() override
    {
        const int requested = virtualWidth_ > 0 ? extent_ * width() / virtualWidth_ : 0;
        const bool allFit = widest_ <= viewport()->width();
        resizeContents(allFit ? widest_ : std::max(widest_, requested), contentsSize().height());
        QListView::updateGeometries();
        const QRect rows = viewport()->geometry();
        count_.setGeometry(rows.left(), rows.bottom() + 1, rows.width(), viewportMargins().bottom());
    }

    // Hides the tip, because the pointer is over another row after scrolling.
    void scrollContentsBy(int dx, int dy) override
    {
        QListView::scrollContentsBy(dx, dy);
        QToolTip::hideText();
    }

private:
    // Returns the position of the column of details, or 0 if no row has a detail. All rows are measured, which is fast
    // enough because only short lists have details.
    int detailColumn() const
    {
        if (std::ranges::none_of(rows_.all(), [](const ListRow& row) { return !row.detail.empty(); }))
            return 0;
        int widest = 0;
        for (const ListRow& row : rows_.all())
            widest = std::max(widest, fontMetrics().horizontalAdvance(toQtLine(row.text)));
        return DetailDelegate::columnFor(widest, fontMetrics());
    }

    int rowAt(QPointF point) const { return indexAt(point.toPoint()).row(); }

    bool isCut(const QModelIndex& index) const
    {
        const QRect row = visualRect(index);
        const QSize needed(sizeHintForIndex(index).width(), row.height());
        const QRect text = QStyle::alignedRect(layoutDirection(), Qt::AlignLeft | Qt::AlignTop, needed, row);
        return text.left() < 0 || text.right() >= viewport()->width();
    }

    // Shows the number of selected rows below the list if the number isn't 0. Without the number, the user couldn't see
    // that rows outside the visible part of the list are selected.
    void showCount(std::ptrdiff_t selected)
    {
        count_.setText(QStringLiteral("%1 of %2 selected").arg(selected).arg(rows_.rowCount({})));
        count_.setVisible(selected > 0);
        setViewportMargins(0, 0, 0, selected > 0 ? count_.sizeHint().height() : 0);
        setAccessibleDescription(selected > 0 ? count_.text() : QString());
    }

    // Shows a tip with the whole text of a row that is cut.
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
        // The text is escaped and put into a rich-text paragraph. Otherwise the toolkit could take a name with angle
        // brackets for rich text.
        const QString tip = QStringLiteral("<p style='white-space:%1'>%2</p>")
                                .arg(isOneLine ? "pre" : "pre-wrap", lines.toHtmlEscaped());
        QToolTip::showText(event.globalPos(), tip, viewport(), visualRect(index));
    }

    Rows rows_;
    ListSelection selection_;
    DetailDelegate delegate_;
    FocusOutline outline_;
    QLabel count_{this};  // the number of selected rows; hidden if it is 0
    int pressed_ = -1;
    int widest_ = 0;        // the width of the widest row, pixels
    int extent_ = 0;        // width that the program requests for the rows, virtual pixels
    int virtualWidth_ = 0;  // the width of the list box, virtual pixels
};

}  // namespace

View* makeListView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    return new ListBoxView(state, input, parent);
}

}  // namespace platform::qt
