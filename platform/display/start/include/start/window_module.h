// window_module.h - loads the window module, which shows the program's windows on the user's desktop.
//
// Only the module uses the toolkit (Qt), so a start without a window never loads the toolkit.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace platform::display {

class RestoreRequest;

// Exit codes of a program with a window.
inline constexpr int WindowNoDesktop = 3;
inline constexpr int WindowDesktopLost = 5;  // 4 means that something was left out

// Functions for the menu that the window shows beside the program's own menus. They are called on the toolkit's
// thread. Each function can be empty. showFolder adds a folder of the host (the Linux system) to the device, as a card
// if `card` is true. Each function returns an empty text, or on failure a sentence for the user.
struct HostServices {
    std::function<std::string(const std::filesystem::path& folder, bool card)> showFolder;
    std::function<std::string(const std::filesystem::path& device)> openDevice;
    RestoreRequest* restoreRequest = nullptr;
};

struct WindowStart {
    std::function<int()> program;
    HostServices host;
    // Says what happens if the module can't be loaded or no window can be opened. If this value is 0, an explanation is
    // printed and the exit code is WindowNoDesktop. Any other value is itself the exit code, and no explanation is
    // printed. Such a value is meant for a program that only shows a message and has printed this message on standard
    // error before.
    int otherwise = 0;
};

// Returns true if the environment names a desktop: DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM is set.
[[nodiscard]] bool isDesktopNamed();

// Runs `start.program` on a new thread, and shows the program's windows until the program returns. Call it on the
// process's first thread, which becomes the toolkit's thread. Returns the program's result. If the module can't be
// loaded, this function returns an exit code. If no window can be opened, the process ends in this call. In both cases
// the program doesn't run, and WindowStart::otherwise says what the exit code is and whether an explanation is printed
// on stderr. If the desktop disappears while the program runs, an explanation is printed on stderr, a backup or restore
// in progress is completed, and each question is refused. After that the process ends with WindowDesktopLost.
[[nodiscard]] int runWithWindow(const WindowStart& start);

}  // namespace platform::display

// The module's entry point, which runWithWindow() looks up by name and calls. Only the module defines this function, in
// display/qt/run_with_window.cpp.
extern "C" int quillboxRunWithWindow(const platform::display::WindowStart* start);
