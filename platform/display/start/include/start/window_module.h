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

// The host's part of the commands in the window's own menu. Called on the toolkit's thread. Each function can be empty.
// A result that isn't an empty text is a sentence for the user that says why the call failed.
struct HostServices {
    std::function<std::string(const std::filesystem::path& folder, bool card)> showFolder;
    std::function<std::string(const std::filesystem::path& device)> openDevice;
    RestoreRequest* restoreRequest = nullptr;
};

struct WindowStart {
    std::function<int()> program;
    HostServices host;
    // The exit code where no window can be opened, without an explanation: for a program that only shows a message
    // which standard error has already. 0: WindowNoDesktop, with an explanation.
    int otherwise = 0;
};

// Whether the environment names a desktop.
[[nodiscard]] bool isDesktopNamed();

// Runs `start.program` on a new thread and shows its windows until it returns. Call it on the process's first thread,
// which becomes the toolkit's. The result is that of the program.
// WindowNoDesktop, with an explanation on stderr and without running the program: the module can't be loaded, or no
// window can be opened.
// If the desktop disappears meanwhile, the current run is completed and each question is refused. The process then ends
// with WindowDesktopLost and an explanation on stderr.
[[nodiscard]] int runWithWindow(const WindowStart& start);

}  // namespace platform::display

// The module's entry point, with the contract of runWithWindow(). Only the module defines it, in
// display/qt/run_with_window.cpp. The program finds it by name.
extern "C" int quillboxRunWithWindow(const platform::display::WindowStart* start);
