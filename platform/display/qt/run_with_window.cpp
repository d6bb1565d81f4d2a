#include "closing_display.h"
#include "plain_style.h"
#include "screen.h"
#include "session_end.h"
#include "start/window_module.h"

#include <QApplication>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <thread>

#include <unistd.h>

namespace {

using namespace platform::qt;
using platform::display::WindowDesktopLost;
using platform::display::WindowNoDesktop;
using platform::display::WindowStart;

// State for handleMessage() and endWithLostDesktop(). If the toolkit can't open the desktop or loses the connection to
// it, the toolkit ends the process without returning to its caller, but calls at least one of these functions before.
// So these functions must explain the failure, bring a running program to its end, and set the exit code.
struct RunState {
    std::atomic<bool> windowsOpen = false;
    std::atomic<bool> programEnded = true;
    int otherwise = 0;  // WindowStart::otherwise
    ClosingDisplay closingDisplay;
};

// Returns the state, which is never destroyed, because the program's thread can run longer than main().
RunState& runState()
{
    static auto& state = *new RunState;
    return state;
}

void report(std::string_view sentence)
{
    std::cerr << "quillbox: " << sentence << std::endl;
}

[[noreturn]] void endWithoutDesktop(const QString& reason)
{
    if (runState().otherwise != 0)
        std::_Exit(runState().otherwise);
    report("no window can be opened here: " + reason.simplified().toStdString());
    std::cerr << "It needs a desktop (DISPLAY or WAYLAND_DISPLAY). With --script it works without one." << std::endl;
    std::_Exit(WindowNoDesktop);
}

// Called on the toolkit's thread. From now on no new window is shown, and each window that waits for the user is
// closed. Returns when the program has returned.
void closeProgram()
{
    runState().closingDisplay.closeUntil([] { return runState().programEnded.load(); });
}

// Called on the toolkit's thread when the process is about to end. The caller is handleMessage(), or the C library runs
// this function as an exit handler. Does nothing if the program has returned already. Otherwise the desktop is lost, so
// this function closes the program and ends the process.
void endWithLostDesktop()
{
    if (runState().programEnded)
        return;
    report("the desktop is gone. A run in progress still finishes.");
    closeProgram();
    std::_Exit(WindowDesktopLost);
}

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg) {
        if (!runState().windowsOpen)
            endWithoutDesktop(text);
        endWithLostDesktop();
        std::_Exit(WindowDesktopLost);
    }
    // After one of these messages the toolkit ends the process. The exit handlers would be too late, because objects
    // that the program's thread still uses are destroyed before these handlers run.
    if (text.startsWith(QLatin1String("The X11 connection broke")) ||
        text.startsWith(QLatin1String("The Wayland connection broke")))
        endWithLostDesktop();
    // Before the desktop is open, no warning is printed. If the desktop can't be opened, endWithoutDesktop() prints the
    // fatal message, which is enough.
    if (runState().windowsOpen && type != QtDebugMsg && type != QtInfoMsg)
        std::cerr << text.toStdString() << std::endl;
}

int showProgram(QApplication& application, const WindowStart& start)
{
    Screen screen(start.host);
    int result = 0;
    runState().programEnded = false;
    const SessionEnd sessionEnd(closeProgram);
    std::thread thread([&] {
        result = start.program();
        runState().programEnded = true;
        runState().closingDisplay.wake();
        // This calls exit(), because quit() would first ask the windows, and a window that is still on the screen would
        // refuse to close.
        QMetaObject::invokeMethod(
            &application, [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
    });
    QApplication::exec();
    thread.join();
    return result;
}

}  // namespace

extern "C" int quillboxRunWithWindow(const WindowStart* start)
{
    runState().otherwise = start->otherwise;
    qInstallMessageHandler(handleMessage);
    if (!platform::display::isDesktopNamed())
        endWithoutDesktop(QStringLiteral("neither DISPLAY nor WAYLAND_DISPLAY is set."));

    int count = 1;
    char name[] = "quillbox";
    char* arguments[] = {name, nullptr};
    QApplication application(count, arguments);
    QApplication::setDesktopFileName(QStringLiteral("quillbox"));
    usePlainStyle();
    QApplication::setQuitOnLastWindowClosed(false);  // the program decides when it ends
    runState().windowsOpen = true;
    // The toolkit can also end the process without a message. Exit handlers run in reverse order. This one is
    // registered after the application was made, so that it runs before those of the toolkit.
    std::atexit(endWithLostDesktop);
    return showProgram(application, *start);
}
