// desktop_services.h - services of the desktop for a run, which is a backup or a restore. They show the run's progress
// on the icon in the taskbar, prevent the computer from sleeping during the run, and show a notification when the run
// ends.
//
// All calls go over D-Bus. Only the destructor waits for an answer. On a desktop without one of these services, the
// calls to that service have no effect.
#pragma once

#include <QDBusPendingCall>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <optional>

namespace platform::qt {

class DesktopServices final : public QObject {
public:
    DesktopServices() = default;
    // Waits at most a second until the desktop has received the last notification.
    ~DesktopServices() override;

    // Called when a run begins. Prevents the computer from sleeping until endRun(). The desktop can show `reason` to
    // the user.
    void beginRun(const QString& reason);
    // Shows the share of the run that is done, from 0 to 1.
    void showShare(double share);
    void endRun();

    void notify(const QString& title, const QString& text);

private:
    void inhibitByLogin(const QString& reason);
    void inhibitByPortal(const QString& reason);
    void updateLauncher(double share, bool visible);

    unsigned run_ = 0;  // number of the run; an inhibitor that arrives after its run has ended is dropped
    bool underway_ = false;
    int shownPercent_ = -1;
    QDBusUnixFileDescriptor inhibitor_;  // when this descriptor is closed, the computer may sleep again
    QString portalRequest_;
    std::optional<QDBusPendingCall> notification_;
};

}  // namespace platform::qt
