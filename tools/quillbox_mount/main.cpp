// main.cpp - the command line of quillbox-mount.

#include "archive/set_search.h"
#include "mount_point.h"
#include "screen_text/screen_text.h"
#include "session.h"
#include "set/block_codec.h"

#include "kernel/error_reason.h"
#include "kernel/standard_streams.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace {

using namespace quillbox_mount;

constexpr int exitGood = 0;
constexpr int exitNotMounted = 1;
constexpr int exitUsage = 2;  // bad usage, no set, or no empty folder

struct CommandLine {
    std::string where;
    std::string folder;
    bool recursive = false;
    bool foreground = false;
};

int refuse(int exitCode, const std::string& sentence)
{
    std::cerr << "quillbox-mount: " << sentence << "\n";
    return exitCode;
}

// When the process goes to the background, it leaves its working folder. So the path of the folder to mount on must be
// absolute. The paths of the sets are already absolute.
int mount(const CommandLine& line)
{
    const archive::FoundSets found = archive::searchSets({line.where}, line.recursive);
    for (const std::string& fault : found.faults)
        (void)refuse(exitUsage, fault);
    if (found.sets.empty())
        return exitUsage;
    if (std::string fault = folderFault(line.folder); !fault.empty())
        return refuse(exitUsage, fault);
    if (std::string fault = computerFault(); !fault.empty())
        return refuse(exitNotMounted, fault);
    if (!CodecWorks())
        return refuse(exitNotMounted, "the library that unpacks blocks doesn't work on this computer");
    ShownSets sets(found.sets);
    sets.readSingle();
    const std::string folder = std::filesystem::canonical(line.folder).string();
    const std::string fault = serve(sets, folder, line.foreground ? Ground::Foreground : Ground::Background);
    return fault.empty() ? exitGood : refuse(exitNotMounted, fault);
}

int run(int count, char** arguments)
{
    CLI::App app("Shows backup sets as folders that can be read by every program, until they are unmounted with "
                 "`fusermount3 -u DIR`.\n"
                 "Exit code: 0 good; 1 the sets can't be mounted, or not any longer; 2 bad usage, no set, or DIR isn't "
                 "an empty folder.",
                 "quillbox-mount");
    app.set_version_flag("--version", "quillbox-mount " QUILLBOX_VERSION);
    CommandLine line;
    app.add_option("WHERE", line.where,
                   "a list file, a data file, that path without the ending, or a folder with sets such as a card")
        ->required();
    app.add_option("DIR", line.folder, "the empty folder that shows them")->required();
    app.add_flag("--recursive", line.recursive, "searches folders in depth");
    app.add_flag("--foreground", line.foreground, "stays in the foreground, and unmounts when Ctrl-C is pressed");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitGood : exitUsage;
    }
    return mount(line);
}

}  // namespace

int main(int count, char** arguments)
{
    platform::kernel::secureStandardStreams();
    try {
        const int exitCode = run(count, arguments);
        if (!platform::kernel::standardOutputIsWritten())
            throw std::runtime_error("standard output can't be written");
        return exitCode;
    } catch (const std::exception& error) {
        return refuse(exitNotMounted, screen_text::onScreen(std::string_view(platform::kernel::reasonOf(error))));
    }
}
