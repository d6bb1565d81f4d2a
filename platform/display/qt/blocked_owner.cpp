#include "blocked_owner.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace platform::qt {

BlockedOwner::BlockedOwner(QWidget& owner, QWidget& question, std::function<void()> closing)
    : QObject(&question), owner_(owner), question_(question), closing_(std::move(closing))
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool BlockedOwner::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::ContextMenu:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
        return isInOwner(watched);
    case QEvent::WindowActivate:
        if (watched == &owner_)
            showQuestion();
        return false;
    case QEvent::Close:
        if (watched != &owner_)
            return false;
        event->ignore();
        showQuestion();
        closing_();
        return true;
    default:
        return false;
    }
}

bool BlockedOwner::isInOwner(QObject* object) const
{
    const auto* widget = qobject_cast<const QWidget*>(object);
    return widget && widget->window() == &owner_;
}

void BlockedOwner::showQuestion()
{
    question_.raise();
    question_.activateWindow();
}

}  // namespace platform::qt
