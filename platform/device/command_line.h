// command_line.h - parses the command line of quillbox.
#pragma once

#include "command_options.h"
#include "device/device.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

struct CommandLine {
    std::filesystem::path device;  // defaultDeviceFolder() if none is named
    std::vector<ExtraFolder> extras;
    std::optional<std::filesystem::path> set;  // the list file of a set to restore from, in the window
    std::vector<std::filesystem::path> mediaFolders;
    std::optional<std::string> script;  // a file, or "-" for standard input
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    std::optional<std::string> transcript;  // a file, or "-" for standard output
    std::optional<Command> command;         // empty: a script runs, or the window opens
};

struct ParsedCommandLine {
    std::optional<CommandLine> options;  // nothing: show `message` and exit
    std::string message;                 // help, version, or what is wrong
    int exitCode = 0;                    // 2 for bad usage: show the message on standard error
};

[[nodiscard]] ParsedCommandLine parseCommandLine(int count, const char* const* words);

}  // namespace platform::device
