#include "start/window_module.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>

namespace platform::display {

namespace {

constexpr const char* ModuleFile = "quillbox-window.so";
constexpr const char* EntryPoint = "quillboxRunWithWindow";

// The relative path from the program to its module is the same in a build and in an installation.
std::filesystem::path modulePath()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path() / QUILLBOX_MODULE_FOLDER / ModuleFile;
}

}  // namespace

bool isDesktopNamed()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM");
}

int runWithWindow(const WindowStart& start)
{
    // The module is never unloaded, because the toolkit's threads and exit handlers run code in it.
    void* module = dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* entry = module ? dlsym(module, EntryPoint) : nullptr;
    if (!entry && start.otherwise != 0)
        return start.otherwise;
    if (!entry) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): dlerror() keeps its message per thread
        std::cerr << "quillbox: its window can't be loaded: " << dlerror() << "\n"
                  << "With --script it works without one.\n";
        return WindowNoDesktop;
    }
    return reinterpret_cast<decltype(&quillboxRunWithWindow)>(entry)(&start);
}

}  // namespace platform::display
