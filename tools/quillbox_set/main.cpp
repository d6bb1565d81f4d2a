// main.cpp - the command line of quillbox-set, and its commands on a single set.

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_folder.h"
#include "archive_commands.h"
#include "exit_code.h"
#include "extraction.h"
#include "listing.h"
#include "result_line.h"
#include "salvage.h"
#include "screen_text/screen_text.h"
#include "set_listing.h"
#include "single_item.h"

#include "file/name_space.h"
#include "kernel/error_reason.h"
#include "kernel/standard_streams.h"
#include "text/host_name.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace {

using namespace quillbox_set;
using namespace archive;

// How databases and the registry are written.
struct Packing {
    bool raw = false;
    std::string format = "jsonl";
};

void addFormat(CLI::App& command, Packing& packing)
{
    CLI::Option* format = command.add_option("--form", packing.format, "the format of databases; default: jsonl")
                              ->type_name("jsonl|vcard|ical|csv")
                              ->check([](const std::string& name) {
                                  return database_formats::formatNamed(name) ? "" : "there is no format " + name;
                              });
    command.add_flag("--raw", packing.raw, "writes databases and the registry byte for byte as they are in the set")
        ->excludes(format);
}

std::optional<database_formats::Format> formatOf(const Packing& packing)
{
    return packing.raw ? std::nullopt : database_formats::formatNamed(packing.format);
}

// Opens the set, calls `action` with it and returns the result. If the set can't be opened, prints why and returns
// exitNoSet.
template <class Action>
int onSet(const std::string& argument, const Action& action)
{
    const std::optional<SetFiles> files = findSet(argument);
    if (!files)
        return reportNoSet(argument);
    const OpenedSet set(*files);
    return set.isOpen() ? action(set) : reportTrouble(set.trouble());
}

int extract(const CommandLine& line, ExtractionOptions options)
{
    const std::optional<SetFiles> files = findSet(line.set);
    if (!files)
        return reportNoSet(line.set);
    std::error_code error;
    platform::file::prepareProcess();
    std::filesystem::create_directories(line.second, error);
    options.json = line.json;
    options.folder = line.second;
    const OpenedSet set(*files, line.second);
    return set.isOpen() ? extractItems(set.list(), set.mounted(), options) : reportTrouble(set.trouble());
}

int list(const CommandLine& line, ListingOptions options)
{
    if (!findSet(line.set)) {
        if (const std::optional<SetFolder> folder = findSets(line.set))
            return listSets(*folder, line.json);
    }
    options.json = line.json;
    options.sizes |= options.ratios || options.order == ListOrder::BySize;
    return onSet(line.set, [&](const OpenedSet& set) { return listSet(set.list(), set.mounted(), options); });
}

void addList(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<ListingOptions>();  // shared with the callback, which runs later
    CLI::App* listing = app.add_subcommand(
        "list", "prints the comment and the items of a set, or the sets in a folder such as a card's QUILBOX");
    addSet(*listing, line);
    addJson(*listing, line);
    listing->add_flag("--sizes", options->sizes, "also prints the unpacked sizes (unpacks each item)");
    listing->add_flag("--inside", options->inside,
                      "also prints what databases and the registry contain (unpacks them)");

    listing->add_flag("--long", options->ratios, "also prints the unpacked sizes and the ratio");
    listing->add_option("--sort", options->order, "sorts the items; size is the unpacked one")
        ->type_name("name|size|packed")
        ->transform(CLI::CheckedTransformer(std::map<std::string, ListOrder>{{"name", ListOrder::ByName},
                                                                             {"size", ListOrder::BySize},
                                                                             {"packed", ListOrder::ByPackedSize}})
                        .description(""));
    listing->callback([&line, options] { line.exitCode = list(line, *options); });
}

void addCat(CLI::App& app, CommandLine& line)
{
    const auto packing = std::make_shared<Packing>();
    CLI::App* cat = app.add_subcommand("cat", "writes one item to standard output");
    addSet(*cat, line);
    cat->add_option("ITEM", line.second, "its name as in `list`, with / or \\, or \"registry\"")->required();
    addFormat(*cat, *packing);
    cat->callback([&line, packing] {
        const std::optional<SetFiles> files = findSet(line.set);
        line.exitCode = files ? writeItem(*files, line.second, formatOf(*packing)) : reportNoSet(line.set);
    });
}

void addExtract(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<ExtractionOptions>();
    const auto packing = std::make_shared<Packing>();
    CLI::App* take = app.add_subcommand("extract", "unpacks items into a folder");
    addSet(*take, line);
    addJson(*take, line);
    take->add_option("DIR", line.second, "the folder to write to; a missing one is made")->required();
    take->add_option("NAME", options->names,
                     "names of items as in `list`, with / or \\, or \"registry\"; * and ? are wildcards; default: all");
    addFormat(*take, *packing);
    take->add_flag("--force", line.force, "replaces files that exist");
    take->add_flag("--keep-damaged", options->keepDamaged, "keeps what could be unpacked of a damaged item");
    take->callback([&line, options, packing] {
        options->format = formatOf(*packing);
        options->force = line.force;
        line.exitCode = extract(line, *options);
    });
}

std::string emptyFault(const std::string& path)
{
    return path.empty() ? "the path is empty" : "";
}

void addSalvage(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<SalvageOptions>();
    CLI::App* command =
        app.add_subcommand("salvage", "gets items back from a data file whose list is lost, or that is damaged");
    command->add_option("FILE", options->file, "a data file (.QDT), whole, damaged, cut, or joined from several")
        ->required();
    command->add_option("--into", options->folder, "the folder to write to; it must be missing or empty")
        ->type_name("DIR")
        ->check(emptyFault)
        ->required();
    command->add_option("--list", options->lists, "a list file of that time (.QLT), also a cut one, for the names")
        ->type_name("OLD")
        ->allow_extra_args(false);  // one path after each --list
    CLI::Option* set = command->add_option("--set", options->set, "also writes a new set: STEM.QLT and STEM.QDT")
                           ->type_name("STEM")
                           ->check(emptyFault);
    command->add_flag("--unproven", options->unproven, "the new set also takes what is whole but unproven")->needs(set);
    addJson(*command, line);
    command->footer(
        "DIR/recovered.txt lists what was found. An item is complete only if no sector of it can have been replaced. "
        "It\n"
        "is unproven if its stream is whole, but damage of its content wouldn't show: a set has no checksums.\n"
        "Exit code: 0 everything in FILE is complete; 1 something isn't; 2 bad usage or no such file.");
    command->callback([&line, options] {
        options->json = line.json;
        line.exitCode = salvage(*options);
    });
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
    addList(app, line);
    addArchiveCommands(app, line);
    addCat(app, line);
    addExtract(app, line);
    addSalvage(app, line);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        std::ostringstream said;
        const int code = app.exit(error, std::cout, said);
        std::cerr << screen_text::linesOnScreen(platform::text::fromUtf8(said.str()), "");
        return code == 0 ? exitGood : exitNoSet;
    }
    return line.exitCode;
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
        std::cerr << "quillbox-set: " << screen_text::onScreen(std::string_view(platform::kernel::reasonOf(error)))
                  << "\n";
        return exitFaults;
    }
}
