// focus_outline.cpp - a line around the widget that has the keyboard.

#include "focus_outline.h"

#include <QEvent>
#include <QPainter>

namespace platform::qt {

FocusOutline::FocusOutline(QWidget* target) : QWidget(target)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
    target->installEventFilter(this);
}

bool FocusOutline::eventFilter(QObject* watched, QEvent* event)
{
    auto* target = static_cast<QWidget*>(watched);
    switch (event->type()) {
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::Resize:
        setGeometry(target->rect());
        setVisible(target->hasFocus());
        raise();
        break;
    default:
        break;
    }
    return false;
}

void FocusOutline::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

}  // namespace platform::qt
