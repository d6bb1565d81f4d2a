// main.cpp - the command line of quillbox-set.

#include "exit_code.h"
#include "extraction.h"
#include "file/name_space.h"
#include "listed_set.h"
#include "listing.h"
#include "screen_text/screen_text.h"
#include "set_files.h"
#include "set_folder.h"
#include "verification.h"

#include "kernel/standard_streams.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace {

using namespace quillbox_set;

struct CommandLine {
    std::string set;
    std::string folder;
    bool json = false;
    bool raw = false;
    std::string format = "jsonl";
    ListingOptions listing;
    ExtractionOptions extraction;
};

void addSet(CLI::App& command, CommandLine& line)
{
    command
        .add_option("SET", line.set,
                    "path of a list file (.QLT) or a data file (.QDT), or that path without its ending")
        ->required();
    command.add_flag("--json", line.json, "prints JSON");
}

// Opens the set, with the folder `root` as the root of the name space, and runs `action` on it. Without `root` the
// set's own folder is the root.
template <class Action>
int onSet(const std::string& argument, const std::string& root, const Action& action)
{
    const std::optional<SetFiles> files = findSet(argument);
    if (!files) {
        const std::optional<SetFolder> folder = findSets(argument);
        std::cerr << "quillbox-set: "
                  << (folder ? setIsWanted(*folder) : "there is no list file for " + screen_text::onScreen(argument))
                  << "\n";
        return exitNoSet;
    }
    const std::string& folder = root.empty() ? files->folder : root;
    const std::optional<MountedSet> set = mountSet(*files, folder);
    if (!set) {
        std::cerr << "quillbox-set: a folder can't be opened: " << screen_text::onScreen(folder) << "\n";
        return exitNoSet;
    }
    ListedSet list(*set);
    if (!list.isOpen()) {
        std::cerr << "quillbox-set: the list file can't be opened\n";
        return exitNoSet;
    }
    return action(list, *set);
}

int extract(CommandLine& line)
{
    // Reports that there is no set, before the folder is made.
    if (!findSet(line.set))
        return onSet(line.set, "", [](ListedSet&, const MountedSet&) { return exitNoSet; });
    std::error_code error;
    platform::file::prepareProcess();
    std::filesystem::create_directories(line.folder, error);
    line.extraction.json = line.json;
    if (line.raw)
        line.extraction.format.reset();
    else
        line.extraction.format = database_formats::formatNamed(line.format);
    return onSet(line.set, line.folder,
                 [&](ListedSet& set, const MountedSet& files) { return extractItems(set, files, line.extraction); });
}

int list(CommandLine& line)
{
    if (!findSet(line.set)) {
        if (const std::optional<SetFolder> folder = findSets(line.set))
            return listSets(*folder, line.json);
    }
    line.listing.json = line.json;
    return onSet(line.set, "",
                 [&](ListedSet& set, const MountedSet& files) { return listSet(set, files, line.listing); });
}

int run(int count, char** arguments)
{
    CLI::App app(
        "Lists, verifies and unpacks backup sets.\n"
        "Exit code: 0 good; 1 the set has faults, or a part of the request failed; 2 bad usage or no such file.",
        "quillbox-set");
    app.set_version_flag("--version", "quillbox-set " QUILLBOX_VERSION);
    app.require_subcommand(1);
    CommandLine line;

    CLI::App* listing = app.add_subcommand(
        "list", "prints the comment and the items of a set, or the sets in a folder such as a card's QUILBOX");
    addSet(*listing, line);
    listing->add_flag("--sizes", line.listing.sizes, "also prints the unpacked sizes (unpacks each item)");
    listing->add_flag("--inside", line.listing.inside,
                      "also prints what databases and the registry contain (unpacks them)");

    CLI::App* verify = app.add_subcommand("verify", "checks everything that can be checked, and prints each fault");
    addSet(*verify, line);
    verify->footer(
        "A set has no checksums. It is sound if every item can be unpacked, and each database and the registry can be\n"
        "read to the end. A changed byte in the content of an item is found only if it prevents that, which most\n"
        "changes of single bits don't. Compare with the source, or with a checksum of the two files that was made\n"
        "right after the backup, to know whether the content is unchanged.");

    CLI::App* take = app.add_subcommand("extract", "unpacks items into a folder");
    addSet(*take, line);
    take->add_option("DIR", line.folder, "the folder to write to; a missing one is made")->required();
    take->add_option("NAME", line.extraction.names,
                     "names of items as in `list`, with / or \\, or \"registry\"; * and ? are wildcards; default: all");
    CLI::Option* format =
        take->add_option("--form", line.format, "the format of databases: jsonl, vcard, ical or csv; default: jsonl")
            ->check([](const std::string& name) {
                return database_formats::formatNamed(name) ? "" : "there is no format " + name;
            });
    take->add_flag("--raw", line.raw, "writes databases and the registry byte for byte as they are in the set")
        ->excludes(format);
    take->add_flag("--force", line.extraction.force, "replaces files that exist");
    take->add_flag("--keep-damaged", line.extraction.keepDamaged, "keeps what could be unpacked of a damaged item");

    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitGood : exitNoSet;
    }
    if (listing->parsed())
        return list(line);
    if (verify->parsed())
        return onSet(line.set, "",
                     [&](ListedSet& set, const MountedSet& files) { return verifySet(set, files, line.json); });
    return extract(line);
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
        std::cerr << "quillbox-set: " << screen_text::onScreen(std::string_view(error.what())) << "\n";
        return exitFaults;
    }
}
