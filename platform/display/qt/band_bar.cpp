#include "band_bar.h"

#include "pictures.h"
#include "view.h"

#include "resources/commands.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

namespace platform::qt {

namespace {

using window::BandState;
using window::BarButton;
using window::MenuItem;

// If the text has no mnemonic, its first letter becomes its mnemonic.
QString withMnemonic(const std::u16string& text)
{
    const QString shown = toQt(text);
    return shown.contains(u'&') ? shown : u'&' + shown;
}

QKeySequence keysOf(WORD command)
{
    const std::u16string_view keys = quillbox::shortcutOf(command);
    return QKeySequence(QString::fromUtf16(keys.data(), static_cast<qsizetype>(keys.size())));
}

void fill(QMenu& menu, const std::vector<MenuItem>& items, const std::function<void(WORD)>& command)
{
    for (const MenuItem& item : items) {
        if (item.separator) {
            menu.addSeparator();
        } else if (!item.items.empty()) {
            fill(*menu.addMenu(withMnemonic(item.text)), item.items, command);
        } else {
            QAction* action = menu.addAction(withMnemonic(item.text));
            action->setEnabled(item.enabled);
            action->setShortcut(keysOf(item.id));
            QObject::connect(action, &QAction::triggered, &menu, [command, id = item.id] { command(id); });
        }
    }
}

// A menu bar without the line that some styles draw below it. The toolbar is to the right, so the line would end in the
// middle of the window.
class BandMenu final : public QMenuBar {
public:
    using QMenuBar::QMenuBar;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QMenuBar::paintEvent(event);
        QPainter(this).fillRect(0, height() - 2, width(), 2, palette().window());
    }
};

QString contentOf(const std::vector<MenuItem>& items)
{
    QString content;
    for (const MenuItem& item : items)
        content +=
            QStringLiteral("%1|%2|%3|%4(").arg(toQt(item.text)).arg(item.id).arg(item.separator).arg(item.enabled) +
            contentOf(item.items) + u')';
    return content;
}

// Returns the whole visible content of the bands as one text. As long as this text stays the same, the bar needn't be
// built again.
QString contentOf(const std::vector<BandState>& bands)
{
    QString content;
    for (const BandState& band : bands) {
        content += contentOf(band.menu) + QStringLiteral("/%1/%2").arg(band.bitmapId).arg(band.imageId);
        for (const BarButton& button : band.buttons)
            content += QStringLiteral(";%1|%2|%3|%4")
                           .arg(button.id)
                           .arg(button.image)
                           .arg(button.enabled)
                           .arg(button.separator);
    }
    return content;
}

// Returns the tip of a button. It says what the button does, and shows the keys of its command. The shortcut itself
// belongs to the menu item with the same command.
QString tipOf(const BandState& band, const BarButton& button)
{
    QString tip = pictureName(band.bitmapId, button.image);
    if (const QKeySequence keys = keysOf(static_cast<WORD>(button.id)); !keys.isEmpty())
        tip += QStringLiteral(" (%1)").arg(keys.toString(QKeySequence::NativeText));
    if (const QString more = pictureTip(band.bitmapId, button.image); !more.isEmpty())
        tip += u'\n' + more;
    return tip;
}

}  // namespace

BandBar::BandBar(QWidget* parent, std::function<void(WORD)> command, QMenu& ownMenu)
    : QWidget(parent), command_(std::move(command)), ownMenu_(ownMenu), row_(new QHBoxLayout(this))
{
    row_->setContentsMargins({});
    row_->setSpacing(0);
}

void BandBar::show(const std::vector<BandState>& bands)
{
    // The window core reports a change of the bands even if only the window's size has changed. The bar's content
    // doesn't depend on the size, so the bar isn't built again for such a report.
    const QString content = contentOf(bands);
    if (content == shown_)
        return;
    shown_ = content;
    clear();
    for (const BandState& band : bands) {
        if (!band.menu.empty())
            addMenu(band.menu);
        if (!band.buttons.empty())
            addButtons(band);
    }
    row_->addStretch(1);
}

void BandBar::openMenu()
{
    // The menu takes the focus. When the menu closes, the focus returns to the widget that had it before.
    if (menu_ && !menu_->actions().isEmpty())
        menu_->setActiveAction(menu_->actions().front());
}

void BandBar::clear()
{
    menu_ = nullptr;
    while (QLayoutItem* item = row_->takeAt(0)) {
        if (QWidget* widget = item->widget())
            widget->deleteLater();
        delete item;
    }
}

void BandBar::addMenu(const std::vector<MenuItem>& items)
{
    menu_ = new BandMenu(this);
    menu_->setAccessibleName(tr("Menu"));
    // Some desktops would move a native menu bar out of the window.
    menu_->setNativeMenuBar(false);
    menu_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    for (const MenuItem& item : items)
        fill(*menu_->addMenu(withMnemonic(item.text)), item.items, command_);
    menu_->addMenu(&ownMenu_);
    row_->addWidget(menu_, 0, Qt::AlignVCenter);
}

void BandBar::addButtons(const BandState& band)
{
    auto* bar = new QToolBar(this);
    bar->setAccessibleName(tr("Toolbar"));
    const int side = std::max(style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this), fontMetrics().height());
    bar->setIconSize({side, side});
    if (band.imageId) {
        auto* image = new QLabel(bar);
        image->setPixmap(pictureOf(band.imageId, 0).pixmap(QSize(side, side), devicePixelRatioF()));
        image->setAccessibleName(bar->accessibleName());
        image->setContentsMargins(side / 4, 0, side / 4, 0);
        bar->addWidget(image);
    }
    for (const BarButton& button : band.buttons) {
        if (button.separator) {
            bar->addSeparator();
            continue;
        }
        QAction* action =
            bar->addAction(pictureOf(band.bitmapId, button.image), pictureName(band.bitmapId, button.image));
        action->setToolTip(tipOf(band, button));
        action->setEnabled(button.enabled);
        connect(action, &QAction::triggered, this, [this, id = button.id] { command_(static_cast<WORD>(id)); });
        // Tab must reach the buttons, because some have no menu item.
        bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    }
    row_->addWidget(bar, 0, Qt::AlignVCenter);
}

}  // namespace platform::qt
