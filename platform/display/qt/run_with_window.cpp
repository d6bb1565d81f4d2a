// run_with_window.cpp - the entry point of the window module.

#include "farewell.h"
#include "plain_style.h"
#include "screen.h"
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

// The toolkit ends the process by itself, without a way back, if it can't open the desktop or loses it. What
// is to be done then needs to know how far the start has come.
struct Running {
    std::atomic<bool> windowsOpen = false;
    std::atomic<bool> programEnded = true;
    Farewell farewell;
};

// Never destroyed: the program's thread may outlive main().
Running& running()
{
    static auto& all = *new Running;
    return all;
}

void say(std::string_view sentence)
{
    std::cerr << "quillbox: " << sentence << std::endl;
}

[[noreturn]] void endWithoutDesktop(const QString& reason)
{
    say("no window can be opened here: " + reason.simplified().toStdString());
    std::cerr << "It needs a desktop (DISPLAY or WAYLAND_DISPLAY). With --script it works without one." << std::endl;
    std::_Exit(WindowNoDesktop);
}

// Runs on the desktop's thread, wherever the toolkit gave up.
void endWithLostDesktop()
{
    if (running().programEnded)
        return;
    say("the desktop is gone. What is being done is brought to its end.");
    running().farewell.closeEverything([] { return running().programEnded.load(); });
    std::_Exit(WindowDesktopLost);
}

void hear(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg) {
        if (!running().windowsOpen)
            endWithoutDesktop(text);
        endWithLostDesktop();
        std::_Exit(WindowDesktopLost);
    }
    // Its last words before it ends the process. Whoever waits for the exit handlers comes too late: some of
    // what the program's thread still works with is taken apart before them.
    if (text.startsWith(QLatin1String("The X11 connection broke")) ||
        text.startsWith(QLatin1String("The Wayland connection broke")))
        endWithLostDesktop();
    // How the toolkit failed to open the desktop is said once, by the fatal message.
    if (running().windowsOpen && type != QtDebugMsg && type != QtInfoMsg)
        std::cerr << text.toStdString() << std::endl;
}

bool isDesktopNamed()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread yet
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM");
}

int showProgram(QApplication& application, const std::function<int()>& program)
{
    Screen screen;
    int result = 0;
    running().programEnded = false;
    std::thread thread([&] {
        result = program();
        running().programEnded = true;
        running().farewell.look();
        // Not quit(): that asks the windows first, and one that the screen has not yet taken away would refuse.
        QMetaObject::invokeMethod(
            &application, [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
    });
    QApplication::exec();
    thread.join();
    return result;
}

}  // namespace

extern "C" int quillboxRunWithWindow(const std::function<int()>* program)
{
    qInstallMessageHandler(hear);
    if (!isDesktopNamed())
        endWithoutDesktop(QStringLiteral("neither DISPLAY nor WAYLAND_DISPLAY is set."));

    int count = 1;
    char name[] = "quillbox";
    char* arguments[] = {name, nullptr};
    QApplication application(count, arguments);
    QApplication::setDesktopFileName(QStringLiteral("quillbox"));
    usePlainStyle();
    QApplication::setQuitOnLastWindowClosed(false);  // the program says when it ends
    running().windowsOpen = true;
    // If it goes without a word. After the application: what is registered last is called first.
    std::atexit(endWithLostDesktop);
    return showProgram(application, *program);
}
