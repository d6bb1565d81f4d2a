#include "focus_outline.h"

#include "plain_style.h"

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
    drawOutline(painter, rect(), palette().color(QPalette::Highlight));
}

}  // namespace platform::qt
