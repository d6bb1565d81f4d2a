#include "top_view.h"

#include <QApplication>
#include <QMessageBox>
#include <QScreen>

#include <algorithm>

namespace platform::qt {

void TopView::setWaiting(bool waiting)
{
    if (waiting)
        widget().setCursor(Qt::WaitCursor);
    else
        widget().unsetCursor();
}

void TopView::comeToFront()
{
    QWidget& own = widget();
    if (own.isMinimized())
        own.setWindowState(own.windowState() & ~Qt::WindowMinimized);
    own.raise();
    // If a question blocks the window, the user must answer the question first. Some questions aren't modal windows for
    // the toolkit, so this function also looks for message boxes.
    const auto boxes = own.findChildren<QMessageBox*>(Qt::FindDirectChildrenOnly);
    const auto box = std::ranges::find_if(boxes, &QWidget::isVisible);
    QWidget* question = box != boxes.end() ? *box : QApplication::activeModalWidget();
    QWidget& front = question && question->parentWidget() == &own ? *question : own;
    front.raise();
    front.activateWindow();
}

void placeOverOwner(QWidget& window)
{
    const QWidget* owner = window.parentWidget();
    const QScreen* screen = owner ? owner->screen() : window.screen();
    QRect frame(QPoint(), window.size());
    frame.moveCenter(owner && owner->isVisible() ? owner->frameGeometry().center()
                                                 : screen->availableGeometry().center());
    const QRect room = screen->availableGeometry();
    frame.moveLeft(std::max(std::min(frame.left(), room.right() - frame.width()), room.left()));
    frame.moveTop(std::max(std::min(frame.top(), room.bottom() - frame.height()), room.top()));
    window.move(frame.topLeft());
}

}  // namespace platform::qt
