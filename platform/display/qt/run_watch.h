// run_watch.h - shows the progress and the outcome of a run (a backup or restore), in the windows and on the desktop.
#pragma once

#include "desktop_services.h"
#include "run_view.h"
#include "top_view.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <unordered_map>

namespace platform::qt {

class RunWatch final : public QObject {
public:
    using Tops = std::unordered_map<HWND, TopView*>;

    // Each call of look() shows the run in all windows that are in `tops` at that time.
    RunWatch(const Tops& tops, std::function<bool()> programIsIdle);

    // Must be called when the program becomes busy, perhaps with a run. From that time on a timer calls look() a few
    // times a second, until the program waits for input and no run is in progress.
    void programWorks();
    // Shows the progress of the current run, or the outcome of a run that has ended since the last call. The timer of
    // programWorks() calls this function. The owner of this object must call it too, when the program begins to wait
    // for the user, when a window opens, and before the windows close.
    void look();

private:
    void followRun(const kernel::RunProgress& progress);
    void endRun(const kernel::RunProgress& progress);

    const Tops& tops_;
    std::function<bool()> programIsIdle_;
    QTimer timer_;  // runs while the program is busy or a run is underway
    DesktopServices desktop_;
    RunClock clock_;
    unsigned begun_;  // the last run that was reported to desktop_
    unsigned ended_;  // the last run whose outcome was shown
};

}  // namespace platform::qt
