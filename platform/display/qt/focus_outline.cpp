// focus_outline.cpp - a line around the widget that has the keyboard.

#include "focus_outline.h"

#include <QEvent>
#include <QPainter>

namespace platform::qt {

void drawOutline(QPainter& painter, const QRect& rect, const QColor& color)
{
    painter.fillRect(rect.x(), rect.y(), rect.width(), 1, color);
    painter.fillRect(rect.x(), rect.bottom(), rect.width(), 1, color);
    painter.fillRect(rect.x(), rect.y(), 1, rect.height(), color);
    painter.fillRect(rect.right(), rect.y(), 1, rect.height(), color);
}

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
    drawOutline(painter, rect(), palette().color(QPalette::Highlight));
}

}  // namespace platform::qt
