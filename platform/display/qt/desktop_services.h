// desktop_services.h - what the session's desktop offers for a run: its progress on the icon in the taskbar, no sleep
// of the computer meanwhile, and a notification at its end.
//
// All of it goes over D-Bus and nothing waits for an answer. On a desktop without one of these services nothing
// happens.
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
    // Waits a moment until the last notification is with the desktop.
    ~DesktopServices() override;

    // A run begins: the computer doesn't sleep until endRun(). `reason` is for the user.
    void beginRun(const QString& reason);
    // The share of the run that is done, from 0 to 1.
    void showShare(double share);
    void endRun();

    void notify(const QString& title, const QString& text);

private:
    void inhibitByLogin(const QString& reason);
    void inhibitByPortal(const QString& reason);
    void updateLauncher(double share, bool visible);

    unsigned run_ = 0;  // an inhibitor that arrives after its run is dropped
    bool underway_ = false;
    int shownPercent_ = -1;
    QDBusUnixFileDescriptor inhibitor_;  // the computer may sleep when it is closed
    QString portalRequest_;
    std::optional<QDBusPendingCall> notification_;
};

}  // namespace platform::qt
