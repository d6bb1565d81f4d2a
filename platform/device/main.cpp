// The main() of quillbox: parses the command line, opens a device and starts the program on it.
#include "command_line.h"
#include "command_run.h"
#include "device/device.h"
#include "exit_codes.h"
#include "telling.h"
#include "trouble_sentences.h"

#include "headless/script_run.h"
#include "kernel/error_reason.h"
#include "kernel/run_progress.h"
#include "kernel/standard_streams.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "start/list_anew.h"
#include "start/restore_request.h"
#include "start/second_start.h"
#include "start/window_module.h"
#include "text/host_name.h"
#include "window/program_status.h"

#include "ce/dialog.h"
#include "ce/window.h"
#include "ce/winmain.h"

#include <array>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <spawn.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

using platform::device::CommandLine;
using platform::kernel::Since;

using platform::device::ExitBadUsage;
using platform::device::ExitComplete;
using platform::device::ExitLeftOut;
using platform::device::ExitNothingDone;
using platform::device::tell;
using platform::device::tellLeftOut;
using platform::device::tellWarnings;

// The program's instance handle. Only one module has resources, so any value but null can identify it. LoadCursorW
// takes a null handle as a request for a cursor of the system.
const auto instance = reinterpret_cast<HINSTANCE>(UINT_PTR{1});

void showBox(const std::string& text, UINT icon)
{
    MessageBoxW(nullptr, platform::text::fromUtf8(text).c_str(), u"Quillbox", MB_OK | icon);
}

// A user who started Quillbox from the desktop doesn't see standard error, so a message box shows the sentence too.
int tellAtStart(const std::string& sentence, int exitCode)
{
    (void)tell(sentence, exitCode);
    if (!platform::display::isDesktopNamed())
        return exitCode;
    return platform::display::runWithWindow({.program =
                                                 [&] {
                                                     showBox(sentence, MB_ICONHAND);
                                                     return exitCode;
                                                 },
                                             .host = {},
                                             .otherwise = exitCode});
}

void showLeftOut(HWND owner)
{
    std::string text;
    for (const platform::device::LeftOut& leftOut : platform::device::whatWasLeftOut(Since::Job))
        text += (text.empty() ? "" : "\n\n") + leftOut.sentence;
    if (!text.empty())
        MessageBoxW(owner, platform::text::fromUtf8(text).c_str(), u"Warning", MB_OK | MB_ICONEXCLAMATION);
}

int startProgram()
{
    WCHAR commandLine[] = u"";
    return WinMain(instance, nullptr, commandLine, SW_SHOW);
}

// Asks the process that has the device open to show its window, and returns the exit code. Returns nothing if no
// process answers. For example, a process that runs a script doesn't answer.
std::optional<int> showFirstStart(const CommandLine& options)
{
    const auto set = options.set ? std::filesystem::absolute(*options.set) : std::filesystem::path();
    const auto answer = platform::display::askFirstStart(options.device, set);
    if (!answer)
        return std::nullopt;
    if (!options.extras.empty())
        (void)tell("its window was open already; its cards and folders stay as they are.", 0);
    return answer->empty() ? 0 : tellAtStart(*answer, ExitNothingDone);
}

// Starts a second process of Quillbox for another device, because a process can open only one device. Returns a
// sentence for the user on failure, otherwise an empty text.
std::string startOn(const std::filesystem::path& device)
{
    const std::string folder = device.string();
    const std::string option = "--device";
    std::array words{const_cast<char*>("quillbox"), const_cast<char*>(option.c_str()),
                     const_cast<char*>(folder.c_str()), static_cast<char*>(nullptr)};
    pid_t child = 0;
    const int error = ::posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, words.data(), environ);
    return error == 0 ? "" : "Quillbox can't be started: " + std::generic_category().message(error) + ".";
}

int runProgramInWindow(platform::device::Device& device, const CommandLine& options,
                       const std::vector<std::string>& warnings)
{
    platform::display::RestoreRequest request;
    const auto openSet = [&](const std::filesystem::path& listFile) {
        platform::device::ShownSet set = device.showSet(listFile);
        if (set.error.empty())
            request.make(std::move(set.listFile));
        return set.error;
    };
    if (options.set)
        if (const std::string error = openSet(*options.set); !error.empty())
            return tellAtStart(error, ExitNothingDone);
    device.showMedia(options.mediaFolders, platform::display::listAnew);
    platform::window::setDeviceName(platform::text::toDeviceName(device.folder().filename().string()));
    const auto firstStart = platform::display::answerSecondStarts(options.device, openSet);
    platform::kernel::setJobEndHandler(showLeftOut);
    // If the desktop disappears, runWithWindow() waits until `program` has returned. Then it ends the process and never
    // returns. So `program` calls tellLeftOut(), and not the code after runWithWindow().
    const auto program = [&] {
        for (const std::string& warning : warnings)
            showBox(warning, MB_ICONEXCLAMATION);
        const int exitCode = startProgram();
        (void)tellLeftOut(exitCode);
        return exitCode;
    };
    const auto showFolder = [&](const std::filesystem::path& folder, bool card) {
        return device.showFolder(folder, card);
    };
    return platform::display::runWithWindow(
        {.program = program, .host = {.showFolder = showFolder, .openDevice = startOn, .restoreRequest = &request}});
}

int runInWindow(const CommandLine& options)
{
    const auto opened = platform::device::openDevice(options.device, options.extras, true);
    if (!opened.device && opened.error.inUse)
        if (const auto exitCode = showFirstStart(options))
            return *exitCode;
    if (!opened.device)
        return tellAtStart(opened.error.sentence, ExitNothingDone);
    tellWarnings(opened);
    return runProgramInWindow(*opened.device, options, opened.warnings);
}

int runByScript(const CommandLine& options)
{
    std::ifstream scriptFile;
    if (*options.script != "-") {
        scriptFile.open(*options.script);
        if (!scriptFile)
            return tell("the script \"" + *options.script + "\" can't be read.", ExitBadUsage);
    }
    std::ofstream transcriptFile;
    if (options.transcript && *options.transcript != "-") {
        transcriptFile.open(*options.transcript);
        if (!transcriptFile)
            return tell("the transcript \"" + *options.transcript + "\" can't be written.", ExitBadUsage);
    }

    const auto opened = platform::device::openDevice(options.device, options.extras, true);
    if (!opened.device)
        return tell(opened.error.sentence, ExitNothingDone);
    tellWarnings(opened);
    if (!options.mediaFolders.empty())
        opened.device->showMedia(options.mediaFolders, [] { return true; });

    platform::headless::ScriptOptions run;
    run.timeout = options.timeout;
    run.output = &std::cout;
    run.errors = &std::cerr;
    if (options.transcript)
        run.transcript = transcriptFile.is_open() ? static_cast<std::ostream*>(&transcriptFile) : &std::cout;
    std::istream& script =
        scriptFile.is_open() ? static_cast<std::istream&>(scriptFile) : platform::kernel::standardInput();
    const int exitCode = tellLeftOut(platform::headless::runScript(startProgram, script, run));
    if (transcriptFile.is_open() && !transcriptFile.flush())
        return tell("the transcript \"" + *options.transcript + "\" can't be written.",
                    exitCode == ExitComplete ? ExitNothingDone : exitCode);
    return exitCode;
}

int run(int count, const char* const* words)
{
    const auto parsed = platform::device::parseCommandLine(count, words);
    if (!parsed.options) {
        (parsed.exitCode == ExitComplete ? std::cout : std::cerr) << parsed.message;
        return parsed.exitCode;
    }
    if (!platform::resource::setResources(quillbox::embeddedResources()))
        return tell("the resources that are built in are damaged.", ExitNothingDone);
    if (parsed.options->command)
        return platform::device::runCommand(*parsed.options, instance);
    return parsed.options->script ? runByScript(*parsed.options) : runInWindow(*parsed.options);
}

}  // namespace

int main(int count, char** words)
{
    platform::kernel::secureStandardStreams();
    int exitCode = ExitNothingDone;
    try {
        exitCode = run(count, words);
    } catch (const std::exception& error) {
        const bool runBegan = platform::kernel::runProgress().number != 0;
        return tell(platform::kernel::reasonOf(error) + ".", runBegan ? ExitLeftOut : ExitNothingDone);
    }
    if (!platform::kernel::standardOutputIsWritten())
        return tell("standard output can't be written.", exitCode == ExitComplete ? ExitNothingDone : exitCode);
    return exitCode;
}
