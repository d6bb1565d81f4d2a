// main.cpp - the command line of quillbox-set.

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_folder.h"
#include "archive/set_search.h"

#include "exit_code.h"
#include "extraction.h"
#include "listing.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "sealing.h"
#include "set_listing.h"
#include "single_item.h"
#include "verification.h"

#include "file/name_space.h"
#include "kernel/standard_streams.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iostream>
#include <map>
#include <stdexcept>

namespace {

using namespace quillbox_set;
using namespace archive;

struct CommandLine {
    std::string set;
    std::string folder;
    std::vector<std::string> where;
    bool recursive = false;
    bool json = false;
    bool raw = false;
    std::string format = "jsonl";
    ListingOptions listing;
    ExtractionOptions extraction;
};

void addJson(CLI::App& command, CommandLine& line)
{
    command.add_flag("--json", line.json, "prints JSON");
}

void addSet(CLI::App& command, CommandLine& line)
{
    command
        .add_option("SET", line.set,
                    "path of a list file (.QLT) or a data file (.QDT), or that path without its ending")
        ->required();
}

void addWhere(CLI::App& command, CommandLine& line)
{
    command
        .add_option("WHERE", line.where,
                    "list files, data files, their paths without the ending, or folders with sets such as a card")
        ->required();
    command.add_flag("--recursive", line.recursive, "searches folders in depth");
    addJson(command, line);
}

void addFormat(CLI::App& command, CommandLine& line)
{
    CLI::Option* format =
        command.add_option("--form", line.format, "the format of databases: jsonl, vcard, ical or csv; default: jsonl")
            ->check([](const std::string& name) {
                return database_formats::formatNamed(name) ? "" : "there is no format " + name;
            });
    command.add_flag("--raw", line.raw, "writes databases and the registry byte for byte as they are in the set")
        ->excludes(format);
}

std::optional<database_formats::Format> formatOf(const CommandLine& line)
{
    return line.raw ? std::nullopt : database_formats::formatNamed(line.format);
}

int reportNoSet(const std::string& argument)
{
    const std::optional<SetFolder> folder = findSets(argument);
    return reportTrouble(folder ? setIsWanted(*folder)
                                : "there is no list file for " + screen_text::onScreen(argument));
}

// Opens the set and runs `action` on it.
template <class Action>
int onSet(const std::string& argument, const Action& action)
{
    const std::optional<SetFiles> files = findSet(argument);
    if (!files)
        return reportNoSet(argument);
    const OpenedSet set(*files);
    return set.isOpen() ? action(set) : reportTrouble(set.trouble());
}

int extract(CommandLine& line)
{
    const std::optional<SetFiles> files = findSet(line.set);
    if (!files)
        return reportNoSet(line.set);
    std::error_code error;
    platform::file::prepareProcess();
    std::filesystem::create_directories(line.folder, error);
    line.extraction.json = line.json;
    line.extraction.format = formatOf(line);
    const OpenedSet set(*files, line.folder);
    return set.isOpen() ? extractItems(set.list(), set.mounted(), line.extraction) : reportTrouble(set.trouble());
}

int list(CommandLine& line)
{
    if (!findSet(line.set)) {
        if (const std::optional<SetFolder> folder = findSets(line.set))
            return listSets(*folder, line.json);
    }
    line.listing.json = line.json;
    line.listing.sizes |= line.listing.ratios || line.listing.order == ListOrder::BySize;
    return onSet(line.set, [&](const OpenedSet& set) { return listSet(set.list(), set.mounted(), line.listing); });
}

int verifyAll(const CommandLine& line)
{
    const std::optional<SetFiles> set = line.where.size() == 1 ? findSet(line.where[0]) : std::nullopt;
    return set ? verifySet(*set, line.json) : verifySets(searchSets(line.where, line.recursive), line.json);
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
    addJson(*listing, line);
    listing->add_flag("--sizes", line.listing.sizes, "also prints the unpacked sizes (unpacks each item)");
    listing->add_flag("--inside", line.listing.inside,
                      "also prints what databases and the registry contain (unpacks them)");

    listing->add_flag("--long", line.listing.ratios, "also prints the unpacked sizes and the ratio");
    listing->add_option("--sort", line.listing.order, "sorts the items: name, size (unpacked) or packed")
        ->transform(CLI::CheckedTransformer(std::map<std::string, ListOrder>{
            {"name", ListOrder::ByName}, {"size", ListOrder::BySize}, {"packed", ListOrder::ByPackedSize}}));

    CLI::App* verify = app.add_subcommand("verify", "checks everything that can be checked, and prints each fault");
    addWhere(*verify, line);
    verify->footer(
        "A set has no checksums. It is sound if every item can be unpacked, and each database and the registry can be\n"
        "read to the end. A changed byte in the content of an item is found only if it prevents that, which most\n"
        "changes of single bits don't. If the set was sealed (see `seal`), every changed byte is found.");

    CLI::App* seal = app.add_subcommand("seal", "writes the checksums of sound sets, in the format of sha256sum");
    seal->add_option("SET", line.where, "as WHERE of `verify`")->required();
    seal->add_flag("--recursive", line.recursive, "searches folders in depth");
    seal->add_flag("--force", line.extraction.force, "also seals sets that have changed since they were sealed");
    seal->footer("QLBX0001.SUM is written beside QLBX0001.QLT. `sha256sum -c` checks it without this program.");

    CLI::App* cat = app.add_subcommand("cat", "writes one item to standard output");
    addSet(*cat, line);
    cat->add_option("ITEM", line.folder, "its name as in `list`, with / or \\, or \"registry\"")->required();
    addFormat(*cat, line);

    CLI::App* take = app.add_subcommand("extract", "unpacks items into a folder");
    addSet(*take, line);
    addJson(*take, line);
    take->add_option("DIR", line.folder, "the folder to write to; a missing one is made")->required();
    take->add_option("NAME", line.extraction.names,
                     "names of items as in `list`, with / or \\, or \"registry\"; * and ? are wildcards; default: all");
    addFormat(*take, line);
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
        return verifyAll(line);
    if (seal->parsed())
        return sealSets(searchSets(line.where, line.recursive), line.extraction.force);
    if (cat->parsed()) {
        const std::optional<SetFiles> files = findSet(line.set);
        return files ? writeItem(*files, line.folder, formatOf(line)) : reportNoSet(line.set);
    }
    return extract(line);
}

}  // namespace

int main(int count, char** arguments)
{
    platform::kernel::secureStandardStreams();
    catchSignals();
    try {
        const int exitCode = run(count, arguments);
        if (!platform::kernel::standardOutputIsWritten())
            throw std::runtime_error("standard output can't be written");
        return exitCode;
    } catch (const Stopped&) {
        endBySignal();
    } catch (const std::exception& error) {
        std::cerr << "quillbox-set: " << screen_text::onScreen(std::string_view(error.what())) << "\n";
        return exitFaults;
    }
}
