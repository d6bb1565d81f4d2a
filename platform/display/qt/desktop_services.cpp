#include "desktop_services.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <functional>

namespace platform::qt {

namespace {

const QString Notifications = QStringLiteral("org.freedesktop.Notifications");
const QString NotificationsPath = QStringLiteral("/org/freedesktop/Notifications");
const QString Portal = QStringLiteral("org.freedesktop.portal.Desktop");
constexpr uint PortalSuspend = 4;
constexpr int LastWait = 1000;  // milliseconds

// Is there a session bus? This must be checked before each use of the bus, because in a session without a bus the
// toolkit would start a bus of its own.
bool hasSessionBus()
{
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") && QDBusConnection::sessionBus().isConnected();
}

template <class Reply>
void whenAnswered(QObject* parent, const QDBusPendingCall& call, const std::function<void(const Reply&)>& answered)
{
    auto* watcher = new QDBusPendingCallWatcher(call, parent);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, parent, [watcher, answered] {
        watcher->deleteLater();
        answered(Reply(*watcher));
    });
}

void closeRequest(const QString& path)
{
    QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
        Portal, path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close")));
}

}  // namespace

DesktopServices::~DesktopServices()
{
    endRun();
    if (notification_)
        notification_->waitForFinished();
}

void DesktopServices::beginRun(const QString& reason)
{
    ++run_;
    underway_ = true;
    shownPercent_ = -1;
    inhibitByLogin(reason);
}

void DesktopServices::inhibitByLogin(const QString& reason)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    message << QStringLiteral("sleep") << QStringLiteral("Quillbox") << reason << QStringLiteral("block");
    using Reply = QDBusPendingReply<QDBusUnixFileDescriptor>;
    whenAnswered<Reply>(this, QDBusConnection::systemBus().asyncCall(message),
                        [this, reason, run = run_](const Reply& reply) {
                            if (!underway_ || run != run_)
                                return;
                            if (reply.isError())
                                inhibitByPortal(reason);
                            else
                                inhibitor_ = reply.value();
                        });
}

void DesktopServices::inhibitByPortal(const QString& reason)
{
    if (!hasSessionBus())
        return;
    QDBusMessage message =
        QDBusMessage::createMethodCall(Portal, QStringLiteral("/org/freedesktop/portal/desktop"),
                                       QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    message << QString() << PortalSuspend << QVariantMap{{QStringLiteral("reason"), reason}};
    using Reply = QDBusPendingReply<QDBusObjectPath>;
    whenAnswered<Reply>(this, QDBusConnection::sessionBus().asyncCall(message), [this, run = run_](const Reply& reply) {
        if (reply.isError())
            return;
        if (underway_ && run == run_)
            portalRequest_ = reply.value().path();
        else
            closeRequest(reply.value().path());
    });
}

void DesktopServices::showShare(double share)
{
    const int percent = static_cast<int>(share * 100);
    if (percent != shownPercent_)
        updateLauncher(share, true);
    shownPercent_ = percent;
}

void DesktopServices::endRun()
{
    if (!underway_)
        return;
    underway_ = false;
    updateLauncher(1, false);
    inhibitor_ = {};
    if (!portalRequest_.isEmpty())
        closeRequest(portalRequest_);
    portalRequest_.clear();
}

void DesktopServices::updateLauncher(double share, bool visible)
{
    if (!hasSessionBus())
        return;
    QDBusMessage update =
        QDBusMessage::createSignal(QStringLiteral("/com/canonical/unity/launcherentry/quillbox"),
                                   QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << QStringLiteral("application://quillbox.desktop")
           << QVariantMap{{QStringLiteral("progress"), share}, {QStringLiteral("progress-visible"), visible}};
    QDBusConnection::sessionBus().send(update);
}

void DesktopServices::notify(const QString& title, const QString& text)
{
    if (!hasSessionBus())
        return;
    QDBusMessage message =
        QDBusMessage::createMethodCall(Notifications, NotificationsPath, Notifications, QStringLiteral("Notify"));
    // The desktop may read the text as markup.
    message << QStringLiteral("Quillbox") << uint{0} << QStringLiteral("quillbox") << title << text.toHtmlEscaped()
            << QStringList() << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("quillbox")}} << -1;
    notification_ = QDBusConnection::sessionBus().asyncCall(message, LastWait);
}

}  // namespace platform::qt
