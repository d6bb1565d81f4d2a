// run_watch.h - shows in the windows and on the desktop how far a run has come, and what it has made at its end.
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

    // Shows it in all of `tops`, whichever they are at that time.
    RunWatch(const Tops& tops, std::function<bool()> programIsIdle);

    // The program begins to do something, which may be a run. From then on it looks a few times a second.
    void programWorks();
    // Looks at once: the program waits for the user, or the windows are about to close.
    void look();

private:
    void followRun(const kernel::RunProgress& progress);
    void endRun(const kernel::RunProgress& progress);

    const Tops& tops_;
    std::function<bool()> programIsIdle_;
    QTimer timer_;  // runs while the program is busy or a run is underway
    DesktopServices desktop_;
    RunClock clock_;
    unsigned begun_;  // the last run of which the desktop knows
    unsigned ended_;  // the last run whose outcome was shown
};

}  // namespace platform::qt
