// main.cpp - quillbox-set: looks into a backup set, checks it, takes things out of it. Needs no device.

#include "exit_code.h"
#include "extraction.h"
#include "file/name_space.h"
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
    command.add_option("SET", line.set, "a list file (.QLT), a data file (.QDT), or both without their ending")
        ->required();
    command.add_flag("--json", line.json, "prints JSON");
}

// Runs `action` on the set with `root` as the root of the name space.
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
    return action(*set);
}

int extract(CommandLine& line)
{
    if (!findSet(line.set))
        return onSet(line.set, "", [](const MountedSet&) { return exitNoSet; });  // before a folder is made for it
    std::error_code error;
    platform::file::prepareProcess();
    std::filesystem::create_directories(line.folder, error);
    line.extraction.json = line.json;
    if (line.raw)
        line.extraction.format.reset();
    else
        line.extraction.format = database_formats::formatNamed(line.format);
    return onSet(line.set, line.folder, [&](const MountedSet& set) { return extractItems(set, line.extraction); });
}

int list(CommandLine& line)
{
    if (!findSet(line.set)) {
        if (const std::optional<SetFolder> folder = findSets(line.set))
            return listSets(*folder, line.json);
    }
    line.listing.json = line.json;
    return onSet(line.set, "", [&](const MountedSet& set) { return listSet(set, line.listing); });
}

int run(int count, char** arguments)
{
    CLI::App app("Looks into a backup set, checks it, takes things out of it.\n"
                 "Exit code: 0 good; 1 the set has faults, or not all was done; 2 bad usage or no such file.",
                 "quillbox-set");
    app.set_version_flag("--version", "quillbox-set " QUILLBOX_VERSION);
    app.require_subcommand(1);
    CommandLine line;

    CLI::App* listing = app.add_subcommand(
        "list", "prints the comment and every item; of a folder, such as a card's QUILBOX, which sets are there");
    addSet(*listing, line);
    listing->add_flag("--sizes", line.listing.sizes, "unpacks each item to tell its size");
    listing->add_flag("--inside", line.listing.inside,
                      "unpacks databases and the registry to tell what stands in them");

    CLI::App* verify = app.add_subcommand("verify", "checks everything that can be checked, and names each fault");
    addSet(*verify, line);
    verify->footer(
        "A set has no checksums. Sound means: every item unpacks to its end, and each database and the registry\n"
        "can be read whole. A byte that has changed inside an item's content is found only where it breaks that,\n"
        "which most changes of single bits don't. Only the source, or a checksum of the two files taken right after\n"
        "the backup, tells whether the content is still the same.");

    CLI::App* take = app.add_subcommand("extract", "unpacks items into a folder");
    addSet(*take, line);
    take->add_option("DIR", line.folder, "the folder; it is made if it is missing")->required();
    take->add_option("NAME", line.extraction.names,
                     "items as `list` shows them, / for \\ at will, or \"registry\"; * and ? match; none: all");
    CLI::Option* format =
        take->add_option("--form", line.format, "what becomes of databases: jsonl, vcard, ical or csv (jsonl)")
            ->check([](const std::string& name) {
                return database_formats::formatNamed(name) ? "" : "there is no format " + name;
            });
    take->add_flag("--raw", line.raw, "takes databases and the registry as they lie in the set, byte for byte")
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
        return onSet(line.set, "", [&](const MountedSet& set) { return verifySet(set, line.json); });
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
