// status_bar.h - the status bar below the main window: what is marked or how far a run has come, what the tree hides,
// whether a backup deletes files, and the date of the newest set.
#pragma once

#include "run_view.h"
#include "window/program_status.h"

#include <QStatusBar>

class QLabel;

namespace platform::qt {

class AnnouncedLabel;

class StatusBar final : public QStatusBar {
public:
    explicit StatusBar(QWidget* parent);

    void follow(const window::StatusState& status);
    void followRun(const RunView& run);
    // The window has appeared. A screen reader speaks how to begin, if that is shown.
    void present();
    // Shown until something else is marked or another run begins, and spoken by a screen reader.
    void showOutcome(const QString& outcome);

private:
    void showMessage();

    QLabel* notice_;  // what the user could overlook: a filter, the deletion of files. Hidden without these.
    AnnouncedLabel* message_;
    QLabel* newest_;  // hidden during a run
    window::StatusState status_;
    QString run_;
    QString outcome_;
};

}  // namespace platform::qt
