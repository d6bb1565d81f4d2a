// status_bar.h - holds the status bar below the main window. During a backup or restore it shows the progress.
// Otherwise it shows what is marked or the last outcome, and the date of the newest set. If a filter hides files in the
// tree, the bar always says which files are shown. If a backup deletes files, the bar always says so.
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
    // Must be called when the window has appeared. If the bar shows the text on how to begin, a screen reader speaks
    // this text.
    void present();
    // Shows the outcome of a run until the marks change or another run begins. A screen reader speaks the outcome.
    void showOutcome(const QString& outcome);

private:
    void showMessage();

    QLabel* notice_;  // facts that the user could overlook: a filter, the deletion of files. Hidden if neither applies.
    AnnouncedLabel* message_;
    QLabel* newest_;  // hidden during a run
    window::StatusState status_;
    QString run_;
    QString outcome_;
};

}  // namespace platform::qt
