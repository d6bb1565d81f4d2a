// The host's main(): opens a device and starts the program on it.
#include "command_line.h"
#include "device/device.h"
#include "trouble_sentences.h"

#include "headless/script_run.h"
#include "kernel/standard_streams.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "start/second_start.h"
#include "start/window_module.h"
#include "text/host_name.h"

#include "ce/dialog.h"
#include "ce/window.h"
#include "ce/winmain.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

using platform::device::CommandLine;
using platform::kernel::Since;

constexpr int Failed = 1;
constexpr int BadUsage = 2;
constexpr int LeftOut = 4;  // 3 is the window's, where there is no display

// Replaces control characters, because a file's name in the sentence could send commands to the terminal.
int tell(std::string sentence, int exitCode)
{
    std::ranges::replace_if(
        sentence, [](unsigned char byte) { return byte < ' ' || byte == 0x7F; }, '?');
    std::cerr << "quillbox: " << sentence << '\n';
    return exitCode;
}

void tellWarnings(const platform::device::OpenResult& opened)
{
    for (const std::string& warning : opened.warnings)
        (void)tell(warning, 0);
}

// The program's own windows may not have reported it.
int tellLeftOut(int exitCode)
{
    const auto all = platform::device::whatWasLeftOut(Since::Start);
    for (const platform::device::LeftOut& leftOut : all) {
        (void)tell(leftOut.sentence, exitCode);
        for (const std::string& name : leftOut.furtherOnes)
            (void)tell("    " + name, exitCode);
        if (leftOut.unnamed != 0)
            (void)tell("    and " + std::to_string(leftOut.unnamed) + " more", exitCode);
    }
    return exitCode == 0 && !all.empty() ? LeftOut : exitCode;
}

// A user who started Quillbox from the desktop doesn't see standard error.
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
    // Any number that isn't null: the program is the only module with resources.
    const auto instance = reinterpret_cast<HINSTANCE>(UINT_PTR{1});
    return WinMain(instance, nullptr, commandLine, SW_SHOW);
}

// If the device is in use, another process shows its window, unless that process runs a script.
int runInWindow(const CommandLine& options)
{
    const auto opened = platform::device::openDevice(options.device, options.extras, true);
    if (!opened.device && opened.error.inUse && platform::display::bringFirstStartToFront(options.device)) {
        if (!options.extras.empty())
            (void)tell("its window was open already; its cards and folders stay as they are.", 0);
        return 0;
    }
    if (!opened.device)
        return tell(opened.error.sentence, Failed);
    tellWarnings(opened);
    const auto firstStart = platform::display::answerSecondStarts(options.device);
    // Report at the end of the program's thread, because without a desktop the other thread doesn't return.
    platform::kernel::setJobEndHandler(showLeftOut);
    return platform::display::runWithWindow([] {
        const int exitCode = startProgram();
        (void)tellLeftOut(exitCode);
        return exitCode;
    });
}

int runByScript(const CommandLine& options)
{
    std::ifstream scriptFile;
    if (*options.script != "-") {
        scriptFile.open(*options.script);
        if (!scriptFile)
            return tell("the script \"" + *options.script + "\" can't be read.", BadUsage);
    }
    std::ofstream transcriptFile;
    if (options.transcript && *options.transcript != "-") {
        transcriptFile.open(*options.transcript);
        if (!transcriptFile)
            return tell("the transcript \"" + *options.transcript + "\" can't be written.", BadUsage);
    }

    const auto opened = platform::device::openDevice(options.device, options.extras, true);
    if (!opened.device)
        return tell(opened.error.sentence, Failed);
    tellWarnings(opened);

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
                    exitCode == 0 ? Failed : exitCode);
    return exitCode;
}

int run(int count, const char* const* words)
{
    const auto parsed = platform::device::parseCommandLine(count, words);
    if (!parsed.options) {
        (parsed.exitCode == 0 ? std::cout : std::cerr) << parsed.message;
        return parsed.exitCode;
    }
    if (!platform::resource::setResources(quillbox::embeddedResources()))
        return tell("the resources that are built in are damaged.", Failed);
    return parsed.options->script ? runByScript(*parsed.options) : runInWindow(*parsed.options);
}

}  // namespace

int main(int count, char** words)
{
    platform::kernel::secureStandardStreams();
    const int exitCode = run(count, words);
    if (!platform::kernel::standardOutputIsWritten())
        return tell("standard output can't be written.", exitCode == 0 ? Failed : exitCode);
    return exitCode;
}
