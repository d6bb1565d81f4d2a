#include "archive_commands.h"

#include "archive/keep_options.h"
#include "archive/set_folder.h"
#include "comparison.h"
#include "explanation.h"
#include "finding.h"
#include "history.h"
#include "pruning.h"
#include "reporting.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "sealing.h"
#include "verification.h"

#include <memory>
#include <optional>

namespace quillbox_set {

using namespace archive;

namespace {

struct PruneOptions {
    KeepRules keep;
    bool dryRun = false;
};

int verifyAll(const CommandLine& line)
{
    const std::optional<SetFiles> set = line.where.size() == 1 ? findSet(line.where[0]) : std::nullopt;
    return set ? verifySet(*set, line.json) : verifySets(line.found(), line.json);
}

int compared(const CommandLine& line, bool patch)
{
    const std::optional<SetFiles> older = findSet(line.set);
    const std::optional<SetFiles> newer = findSet(line.second);
    if (!older || !newer)
        return reportNoSet(older ? line.second : line.set);
    return compareSets(*older, *newer, patch, line.json);
}

int prunedBy(const CommandLine& line, const PruneOptions& options)
{
    if (options.keep.areEmpty())
        return reportTrouble("no rule says which sets to keep; see `quillbox-set prune --help`");
    if (!findSets(line.second))
        return reportTrouble("this is not a folder: " + screen_text::onScreen(line.second));
    return pruneSets(searchSets({line.second}, false), options.keep, options.dryRun, line.json);
}

void addVerify(CLI::App& app, CommandLine& line)
{
    CLI::App* verify = app.add_subcommand("verify", "checks everything that can be checked, and prints each fault");
    addWhere(*verify, line);
    verify->footer(
        "A set has no checksums. It is sound if every item can be unpacked, and each database and the registry can be\n"
        "read to the end. A changed byte in the content of an item is found only if it prevents that, which most\n"
        "changes of single bits don't. If the set was sealed (see `seal`), every changed byte is found.");
    verify->callback([&line] { line.exitCode = verifyAll(line); });
}

void addSeal(CLI::App& app, CommandLine& line)
{
    CLI::App* seal = app.add_subcommand("seal", "writes the checksums of sound sets, in the format of sha256sum");
    seal->add_option("SET", line.where, "as WHERE of `verify`")->required();
    seal->add_flag("--recursive", line.recursive, "searches folders in depth");
    seal->add_flag("--force", line.force, "also seals sets that have changed since they were sealed");
    seal->footer("QLBX0001.SUM is written beside QLBX0001.QLT. `sha256sum -c` checks it without this program.");
    seal->callback([&line] { line.exitCode = sealSets(line.found(), line.force); });
}

void addExplain(CLI::App& app, CommandLine& line)
{
    CLI::App* explain = app.add_subcommand(
        "explain", "writes a description of the sets and a small reader beside them, for whoever finds the card");
    explain->add_option("STORAGE", line.where, "as WHERE of `verify`")->required();
    explain->add_flag("--recursive", line.recursive, "searches folders in depth");
    explain->add_flag("--force", line.force, "replaces files of these names that have another content");
    explain->footer("README.TXT says what the files are, and describes the formats. QLBXREAD.PY lists, verifies and\n"
                    "unpacks the sets on any computer with Python 3.");
    explain->callback([&line] { line.exitCode = explainSets(line.found(), line.force); });
}

void addFind(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<FindOptions>();  // shared with the callback, which runs later
    CLI::App* find = app.add_subcommand("find", "finds items in sets by name, and by what is inside");
    find->add_option(
            "PATTERN", options->pattern,
            "a name of items as in `list`, with / or \\; * and ? are wildcards; without / or \\ it also matches "
            "the last part of a path")
        ->required();
    addWhere(*find, line);
    find->add_option("--text", options->text,
                     "words that are all in one record, in one value of the registry or in one line of a text file")
        ->type_name("WORDS");
    find->add_flag("--ignore-case", options->ignoreCase, "small and capital letters are the same");
    find->footer("Prints the set, its date, the item, and where the words are. --json prints one object a line.\n"
                 "Exit code: 0 found; 1 nothing found, or damage; 2 bad usage or no such file.");
    find->callback([&line, options] {
        options->json = line.json;
        line.exitCode = findItems(line.found(), *options);
    });
}

void addDiff(CLI::App& app, CommandLine& line)
{
    const auto patch = std::make_shared<bool>(false);
    CLI::App* diff = app.add_subcommand("diff", "says what has changed between two sets");
    diff->add_option("OLD", line.set, "as SET of `list`")->required();
    diff->add_option("NEW", line.second, "as SET of `list`")->required();
    diff->add_flag("--patch", *patch, "also prints text files as unified diffs");
    addJson(*diff, line);
    diff->footer("Exit code: 0 the sets are equal; 1 they differ; 2 trouble, such as damage.");
    diff->callback([&line, patch] { line.exitCode = compared(line, *patch); });
}

void addHistory(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<HistoryOptions>();
    const auto value = std::make_shared<std::vector<std::string>>();
    CLI::App* history = app.add_subcommand("history", "shows one item over several sets, in the order of their dates");
    history->add_option("ITEM", options->item, "its name as in `list`, with / or \\, or \"registry\"")->required();
    addWhere(*history, line);
    CLI::Option* record =
        history->add_option("--record", options->record, "words of a record: shows the fields that changed")
            ->type_name("WORDS");
    history->add_option("--value", *value, "key and name of a value of the registry")
        ->type_name("KEY NAME")
        ->expected(2)
        ->excludes(record);
    history->callback([&line, options, value] {
        options->json = line.json;
        if (value->size() == 2)
            options->value = {value->at(0), value->at(1)};
        line.exitCode = showHistory(line.found(), *options);
    });
}

void addPrune(CLI::App& app, CommandLine& line)
{
    const auto options = std::make_shared<PruneOptions>();
    CLI::App* prune = app.add_subcommand("prune", "removes sets from a card, to free their numbers");
    prune->add_option("STORAGE", line.second, "the folder of a card, or its folder QUILBOX")->required();
    addKeepOptions(*prune, options->keep);
    prune->add_flag("--dry-run", options->dryRun, "only prints what would be done");
    addJson(*prune, line);
    prune->footer(
        "Every set is verified first. The rules count the sound sets only, so no sound set goes in favour of a damaged "
        "one.\n"
        "Damaged sets and the newest sound set are never removed. A rule that finds fewer sets than it may keep also\n"
        "keeps the oldest one.");
    prune->callback([&line, options] { line.exitCode = prunedBy(line, *options); });
}

void addReport(CLI::App& app, CommandLine& line)
{
    CLI::App* report = app.add_subcommand("report", "writes a page for a browser about sets and what is in them");
    addWhereAlone(*report, line);
    report->add_option("--output", line.second, "the page to write, such as report.html; - is standard output")
        ->type_name("FILE")
        ->required();
    report->add_flag("--force", line.force, "replaces a file that exists");
    report->footer(
        "The page is one file. It needs no network, and no other file. Each set is verified.\n"
        "Exit code: 0 written; 1 written, but a set is damaged, or not written; 2 bad usage or no such file.");
    report->callback([&line] { line.exitCode = writeReport(line.found(), line.second, line.force); });
}

}  // namespace

void addArchiveCommands(CLI::App& app, CommandLine& line)
{
    addVerify(app, line);
    addSeal(app, line);
    addExplain(app, line);
    addFind(app, line);
    addDiff(app, line);
    addHistory(app, line);
    addPrune(app, line);
    addReport(app, line);
}

}  // namespace quillbox_set
