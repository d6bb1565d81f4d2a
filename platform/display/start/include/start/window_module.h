// window_module.h - loads the window module, which shows the program's windows on the user's desktop.
//
// Only the module uses the toolkit, so a start without a window never loads the toolkit.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace platform::display {

class RestoreRequest;

// Exit codes of a program with a window.
inline constexpr int WindowNoDesktop = 3;
inline constexpr int WindowDesktopLost = 5;  // 4 means that something was left out

// The host's functions for the commands in the window's own menu. Called on the toolkit's thread. Each function can be
// empty. A result that isn't an empty text is a sentence for the user that says why the call failed.
struct HostServices {
    std::function<std::string(const std::filesystem::path& folder, bool card)> showFolder;
    std::function<std::string(const std::filesystem::path& device)> openDevice;
    RestoreRequest* restoreRequest = nullptr;
};

struct WindowStart {
    std::function<int()> program;
    HostServices host;
    // The exit code if no window can be opened. If this value is 0, an explanation is printed and the exit code is
    // WindowNoDesktop. If it isn't 0, no explanation is printed. A program that would only show a message uses such a
    // value if the message is on standard error already.
    int otherwise = 0;
};

// Returns true if the environment names a desktop.
[[nodiscard]] bool isDesktopNamed();

// Runs `start.program` on a new thread, and shows the program's windows until the program returns. Call it on the
// process's first thread, which becomes the toolkit's thread. Returns the program's result. If the module can't be
// loaded or no window can be opened, the program doesn't run. WindowStart::otherwise says what the result is in that
// case, and whether an explanation is printed on stderr. If the desktop disappears while the program runs, the current
// run is completed and each question is refused. After that the process ends with WindowDesktopLost and an explanation
// on stderr.
[[nodiscard]] int runWithWindow(const WindowStart& start);

}  // namespace platform::display

// The module's entry point. It does what the comment on runWithWindow() says. Only the module defines this function, in
// display/qt/run_with_window.cpp. The program looks the function up by name.
extern "C" int quillboxRunWithWindow(const platform::display::WindowStart* start);
