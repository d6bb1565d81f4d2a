// band_bar.cpp - the bar across the top of the main window: the menu at the left, the toolbar beside it.

#include "band_bar.h"

#include "pictures.h"
#include "view.h"

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

// The first letter chooses an item whose text names none.
QString withMnemonic(const std::u16string& text)
{
    const QString shown = toQt(text);
    return shown.contains(u'&') ? shown : u'&' + shown;
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
            QObject::connect(action, &QAction::triggered, &menu, [command, id = item.id] { command(id); });
        }
    }
}

// Without the line that some styles draw below a menu bar: here the toolbar stands beside it, and the line
// would end in the middle of the window.
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

// Everything about them that is shown.
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

}  // namespace

BandBar::BandBar(QWidget* parent, std::function<void(WORD)> command)
    : QWidget(parent), command_(std::move(command)), row_(new QHBoxLayout(this))
{
    row_->setContentsMargins({});
    row_->setSpacing(0);
}

void BandBar::show(const std::vector<BandState>& bands)
{
    // The core lays its bands out anew with each size of the window; nothing of that is seen here.
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
    // The menu takes the keyboard itself, and remembers whom to give it back to.
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
    // Its place is in this bar, on every desktop.
    menu_->setNativeMenuBar(false);
    menu_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    for (const MenuItem& item : items)
        fill(*menu_->addMenu(withMnemonic(item.text)), item.items, command_);
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
        action->setEnabled(button.enabled);
        connect(action, &QAction::triggered, this, [this, id = button.id] { command_(static_cast<WORD>(id)); });
        // Some of them stand in no menu: Tab has to reach them.
        bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    }
    row_->addWidget(bar, 0, Qt::AlignVCenter);
}

}  // namespace platform::qt
