#include "focus_outline.h"
#include "keys.h"
#include "resources/accessible_names.h"
#include "row_delegate.h"
#include "tree_items_model.h"
#include "tree_marking.h"
#include "view_makers.h"

#include "resources/commands.h"

#include "ce/window.h"

#include <QAccessible>
#include <QAction>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMouseEvent>
#include <QToolTip>
#include <QTreeView>

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

using window::Change;
using window::TreeChanges;
using window::TreePart;
using window::WindowState;

// A selection that changes only when the window core changes the selection of the tree view. If the toolkit or a screen
// reader wants to select an item, this class only posts a click on the item to the window core. follow() shows the
// result.
class TreeSelection final : public QItemSelectionModel {
public:
    TreeSelection(QAbstractItemModel* model, std::function<void(const QModelIndex&)> request)
        : QItemSelectionModel(model, model), request_(std::move(request))
    {
    }

    void select(const QModelIndex& index, SelectionFlags flags) override
    {
        if (index.isValid() && (flags & Select) && !isSelected(index))
            request_(index);
    }
    void select(const QItemSelection& selection, SelectionFlags flags) override
    {
        if (!selection.isEmpty())
            select(selection.front().topLeft(), flags);
    }
    void setCurrentIndex(const QModelIndex& index, SelectionFlags flags) override { select(index, flags); }

    void follow(const QModelIndex& index)
    {
        if (index == currentIndex() && isSelected(index))
            return;
        QItemSelectionModel::select(QItemSelection(index, index), ClearAndSelect);
        QItemSelectionModel::setCurrentIndex(index, NoUpdate);
    }

private:
    std::function<void(const QModelIndex&)> request_;
};

// Draws an item. The item's picture contains the check box, so no other check box is drawn. The picture of a selected
// item is drawn without the colour of the selection.
class ItemDelegate final : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->features &= ~QStyleOptionViewItem::HasCheckIndicator;
        if (!option->state.testFlag(QStyle::State_Selected) || option->icon.isNull())
            return;
        const qreal scale = option->widget ? option->widget->devicePixelRatio() : 1.0;
        const QPixmap picture = option->icon.pixmap(option->decorationSize, scale);
        option->icon = QIcon();
        option->icon.addPixmap(picture, QIcon::Normal);
        option->icon.addPixmap(picture, QIcon::Selected);
    }
};

class ItemTreeView final : public QTreeView, public View {
public:
    ItemTreeView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QTreeView(parent), View(state.window, input),
          items_(
              state.window, [this](HTREEITEM item) { marking(item).toggle(this->input()); }, this),
          selection_(&items_, [this](const QModelIndex& index) { clickOn(items_.itemAt(index)); }), delegate_(this),
          outline_(this)
    {
        setModel(&items_);
        setSelectionModel(&selection_);
        setItemDelegate(&delegate_);
        setHeaderHidden(true);
        header()->setStretchLastSection(false);
        header()->setResizeContentsPrecision(0);  // measures only visible rows
        setUniformRowHeights(true);
        setItemsExpandable(false);
        setExpandsOnDoubleClick(false);
        setEditTriggers(NoEditTriggers);
        setAutoScroll(false);
        setTextElideMode(Qt::ElideNone);
        setHorizontalScrollMode(ScrollPerPixel);
        setContextMenuPolicy(Qt::DefaultContextMenu);
        addKeys(quillbox::MarkFolder, [this] { marking(currentItem()).mark(this->input()); });
        addKeys(quillbox::UnmarkFolder, [this] { marking(currentItem()).unmark(this->input()); });
        const auto known = quillbox::findControlName(fromQt(parent->window()->windowTitle()), state.id);
        setAccessibleName(toQt(known.name.empty() ? state.text : std::u16string(known.name)));
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState&, Changes changes) override
    {
        if (!changes.has(Change::Tree))
            return;
        followPictures();
        const TreeChanges tree = window::takeTreeChanges(this->window(), !std::exchange(begun_, true));
        if (items_.apply(tree))
            scheduleDelayedItemsLayout();
        for (const window::TreeFold& fold : tree.folded)
            setExpanded(items_.indexOf(fold.item), fold.expanded);
        const QModelIndex before = selection_.currentIndex();
        selection_.follow(items_.indexOf(tree.selected));
        if (const QModelIndex toShow = items_.indexOf(tree.toShow); isOnARow(toShow))
            scrollTo(toShow);
        const QModelIndex current = selection_.currentIndex();
        const QString mark = current.data(Qt::AccessibleDescriptionRole).toString();
        const bool isMarkNew = std::exchange(currentMark_, mark) != mark;
        // If another item has become the current one, a screen reader reads it without this call.
        if (before == current && (isMarkNew || isFolded(tree, tree.selected)) && hasFocus() && QAccessible::isActive())
            reportCurrentAgain(*this);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { click(*event, &UserInput::treeClick); }
    // On the check box of a folder, a double click has the effect of two clicks.
    void mouseDoubleClickEvent(QMouseEvent* event) override { click(*event, &UserInput::treeDoubleClick); }
    // If the user opens the menu with the mouse, shows the menu of the item under the pointer. Otherwise shows the menu
    // of the selected item. Opening the menu doesn't select the item under the pointer, because selecting a file would
    // mark the file.
    void contextMenuEvent(QContextMenuEvent* event) override
    {
        const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
        const HTREEITEM item = byMouse ? hit(event->pos()).item : currentItem();
        if (!item)
            return;
        const QPoint place = byMouse ? event->pos() : visualRect(items_.indexOf(item)).center();
        showMenu(item, viewport()->mapToGlobal(place));
    }
    void mouseMoveEvent(QMouseEvent*) override {}
    void mouseReleaseEvent(QMouseEvent*) override {}

    void keyPressEvent(QKeyEvent* event) override
    {
        const Qt::KeyboardModifiers modifiers = event->modifiers();
        const bool control = modifiers.testFlag(Qt::ControlModifier);
        const WORD key = virtualKeyOf(*event);
        const bool isSign =
            modifiers.testFlag(Qt::KeypadModifier) && (key == VK_ADD || key == VK_SUBTRACT || key == VK_MULTIPLY);
        if (modifiers.testFlag(Qt::AltModifier) || (control && scrollByArrow(*this, event->key()))) {
            event->setAccepted(!modifiers.testFlag(Qt::AltModifier));
        } else if (!control && !isSign && !event->text().isEmpty() && event->text().front().isPrint()) {
            input().typedText(window(), fromQt(event->text()));
        } else if (key) {
            input().key(window(), key, modifiers.testFlag(Qt::ShiftModifier), control, false);
        } else {
            event->ignore();
        }
    }

    // The toolkit reports to screen readers that the tree has the focus. It doesn't report which item of the tree has
    // the focus. reportFocus() reports the item after the toolkit's report.
    void focusInEvent(QFocusEvent* event) override
    {
        QTreeView::focusInEvent(event);
        QMetaObject::invokeMethod(
            this, [this] { reportFocus(); }, Qt::QueuedConnection);
    }

    bool viewportEvent(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip)
            return QTreeView::viewportEvent(event);
        const auto& asked = static_cast<const QHelpEvent&>(*event);
        const QModelIndex index = indexAt(asked.pos());
        QStringList tip{isCut(index) ? index.data().toString() : QString(), index.data(Qt::ToolTipRole).toString()};
        tip.removeAll(QString());
        QToolTip::showText(asked.globalPos(), tip.join(u'\n').toHtmlEscaped().replace(u'\n', QLatin1String("<br>")),
                           viewport(), visualRect(index));
        return true;
    }

    void updateGeometries() override
    {
        QTreeView::updateGeometries();
        widenColumn(0);
    }
    void scrollContentsBy(int dx, int dy) override
    {
        QTreeView::scrollContentsBy(dx, dy);
        if (dy != 0)
            widenColumn(header()->sectionSize(0));  // never narrower while the user scrolls
    }

private:
    struct Hit {
        HTREEITEM item = nullptr;
        TreePart part = TreePart::Label;
        bool isBox = false;  // the point is in the left half of the picture, where the check box is
    };

    TreeMarking marking(HTREEITEM item) const { return {window(), item}; }
    void click(const QMouseEvent& event, bool (UserInput::*post)(HWND, HTREEITEM, window::TreePart) const)
    {
        if (event.button() != Qt::LeftButton)
            return;
        const auto [item, part, isBox] = hit(event.position().toPoint());
        if (const TreeMarking folder = marking(item); isBox && folder.isFolder())
            folder.toggle(input());
        else
            (input().*post)(window(), item, part);
    }
    HTREEITEM currentItem() const { return items_.itemAt(selection_.currentIndex()); }

    static QKeySequence keysOf(WORD command)
    {
        return QKeySequence(QString::fromStdU16String(std::u16string(quillbox::shortcutOf(command))));
    }
    void addKeys(WORD command, const std::function<void()>& triggered)
    {
        auto* action = new QAction(this);
        action->setShortcut(keysOf(command));
        connect(action, &QAction::triggered, this, triggered);
        addAction(action);
    }

    void showMenu(HTREEITEM item, QPoint place)
    {
        auto* menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        const auto add = [&](const QString& text, bool enabled, void (TreeMarking::*act)(const UserInput&) const) {
            QAction* action = menu->addAction(text);
            action->setEnabled(enabled);
            connect(action, &QAction::triggered, this, [this, item, act] { (marking(item).*act)(input()); });
            return action;
        };
        const TreeMarking state = marking(item);
        // The keys work on the selected item, so the menu of another item doesn't show them.
        const bool showsKeys = item == currentItem();
        QAction* mark = add(tr("&Mark"), state.canMark(), &TreeMarking::mark);
        QAction* unmark = add(tr("&Unmark"), state.canUnmark(), &TreeMarking::unmark);
        menu->addSeparator();
        QAction* expand = add(tr("&Expand all below"), state.canExpand(), &TreeMarking::expandAllBelow);
        if (showsKeys) {
            mark->setShortcut(keysOf(quillbox::MarkFolder));
            unmark->setShortcut(keysOf(quillbox::UnmarkFolder));
            expand->setShortcut(Qt::Key_Asterisk);
        }
        menu->popup(place);
    }

    // Returns true if a part of the item's text is outside the view.
    bool isCut(const QModelIndex& index) const
    {
        if (!index.isValid())
            return false;
        const QSize needed(sizeHintForIndex(index).width(), 1);
        const QRect text = QStyle::alignedRect(layoutDirection(), Qt::AlignLeft, needed, visualRect(index));
        return text.left() < 0 || text.right() >= viewport()->width();
    }

    void clickOn(HTREEITEM item) { input().treeClick(window(), item, TreePart::Label); }

    void followPictures()
    {
        const window::TreePictures pictures = window::treePictures(this->window());
        if (pictures.bitmapId == pictures_.bitmapId)
            return;
        pictures_ = pictures;
        items_.setPictures(pictures);
        // The size of the bitmaps, enlarged if the user's font is larger than the font for which they were drawn.
        const qreal larger = std::max(1.0, fontMetrics().height() / (1.25 * pictures.height));
        setIconSize(QSize(qRound(pictures.width * larger), qRound(pictures.height * larger)));
    }

    // Returns true if every ancestor of the item is expanded. The caller scrolls only to such items, because scrollTo()
    // would expand collapsed ancestors.
    bool isOnARow(const QModelIndex& index) const
    {
        QModelIndex above = index.parent();
        while (above.isValid() && isExpanded(above))
            above = above.parent();
        return index.isValid() && !above.isValid();
    }

    Hit hit(QPoint point) const
    {
        const QModelIndex index = indexAt(point);
        if (!index.isValid())
            return {};
        const auto fromTheStart = [this](const QRect& rect) {
            return QStyle::visualRect(layoutDirection(), viewport()->rect(), rect);
        };
        const int x = fromTheStart(QRect(point, QSize(1, 1))).left();
        const int start = fromTheStart(visualRect(index)).left();
        const int pictureWidth = iconSize().width() + style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
        TreePart part = TreePart::Right;
        if (x < start)
            part = items_.hasChildren(index) && x >= start - indentation() ? TreePart::Button : TreePart::Indent;
        else if (x < start + pictureWidth)
            part = TreePart::Icon;
        else if (x < start + sizeHintForIndex(index).width())
            part = TreePart::Label;
        return {items_.itemAt(index), part, part == TreePart::Icon && x < start + iconSize().width() / 2};
    }

    void widenColumn(int least)
    {
        if (std::exchange(widening_, true))
            return;
        const int width = std::max({least, viewport()->width(), sizeHintForColumn(0)});
        if (header()->sectionSize(0) != width)
            header()->resizeSection(0, width);
        widening_ = false;
    }

    void reportFocus()
    {
        QAccessibleInterface* tree = QAccessible::isActive() ? QAccessible::queryAccessibleInterface(this) : nullptr;
        if (QAccessibleInterface* item = tree && hasFocus() ? tree->focusChild() : nullptr) {
            QAccessibleEvent focus(item, QAccessible::Focus);
            QAccessible::updateAccessibility(&focus);
        }
    }

    static bool isFolded(const TreeChanges& tree, HTREEITEM item)
    {
        return std::ranges::any_of(tree.folded, [&](const window::TreeFold& fold) { return fold.item == item; });
    }

    TreeItemsModel items_;
    TreeSelection selection_;
    ItemDelegate delegate_;
    FocusOutline outline_;
    window::TreePictures pictures_;
    QString currentMark_;  // the mark of the current item, as a screen reader reads it
    bool begun_ = false;
    bool widening_ = false;
};

}  // namespace

View* makeTreeView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    useTreeAccessible();
    return new ItemTreeView(state, input, parent);
}

}  // namespace platform::qt
