#include "command_options.h"

#include "archive/keep_options.h"

#include <CLI/CLI.hpp>

#include <map>

namespace platform::device {

namespace {

constexpr unsigned LastSetNumber = 99;
constexpr unsigned LongestWait = 1'000'000;  // seconds

const char* const ItemHelp = "A file, a folder with all below it (\\Documents or /Documents), a database by its name, "
                             "or \"registry\"; may be repeated";

void addExisting(CLI::App& command, const std::string& name, WithExisting& value, const std::string& help)
{
    static const std::map<std::string, WithExisting> Choices = {{"skip", WithExisting::Skip},
                                                                {"replace", WithExisting::Replace}};
    command.add_option(name, value, help)
        ->type_name("skip|replace")
        ->transform(CLI::CheckedTransformer(Choices).description(""));
}

CLI::App* addBackup(CLI::App& app, BackupOptions& options)
{
    CLI::App* command = app.add_subcommand("backup", "Makes a set, without a window");
    command
        ->add_option("--to", options.to,
                     "The card (\"Stick\"), \"Main device\", or a folder of this computer (with a /)")
        ->type_name("STORAGE")
        ->required();
    command->add_flag("--all", options.all, "Everything: the default");
    command->add_flag("--files", options.files, "All files");
    command->add_flag("--databases", options.databases, "All databases");
    command->add_flag("--registry", options.registry, "The registry");
    command->add_option("--item", options.items, ItemHelp)->type_name("NAME");
    command->add_option("--comment", options.comment, "The comment of the set")->type_name("TEXT");
    command->add_option("--replace", options.replaced, "Replaces the set of this number")
        ->type_name("NUMBER")
        ->check(CLI::Range(1U, LastSetNumber).description(""));
    command->add_flag("--delete-sources", options.deletesSources, "Deletes each file that is safely in the set");
    command->add_flag("--log", options.writesLog, "Writes a log beside the set");
    command->add_flag("--verify", options.verifies, "Reads the set back and compares it with what was read");
    command->add_flag("--no-seal", options.leavesUnsealed, "Writes no checksums beside the set");
    command->add_flag("--dry-run", options.dryRun, "Says what would be stored and whether there is room");
    archive::addKeepOptions(*command, options.keep);
    command->footer(
        "After a complete backup the --keep options remove the sets of the storage that none of them keeps.\n"
        "The filter of the window hides files in the tree only. It leaves nothing out of a backup.");
    return command;
}

CLI::App* addRestore(CLI::App& app, RestoreOptions& options)
{
    CLI::App* command = app.add_subcommand("restore", "Restores a set, or items of it, without a window");
    command
        ->add_option(
            "SET", options.set,
            "The path of a list file (.QLT) on this computer, with or without the ending, or on the device (with \\)")
        ->required();
    command->add_option("--item", options.items, ItemHelp)->type_name("NAME");
    addExisting(*command, "--existing", options.files, "What to do with files that exist; asked on a terminal");
    addExisting(*command, "--databases", options.databases,
                "What to do with databases that exist; asked on a terminal");
    command->add_flag("--no-registry", options.noRegistry, "Leaves the registry as it is");
    command->add_flag("--dry-run", options.dryRun, "Says what would be restored and what exists already");
    return command;
}

}  // namespace

void CommandParser::addTo(CLI::App& app)
{
    backupCommand = addBackup(app, backup);
    restoreCommand = addRestore(app, restore);
    setsCommand = app.add_subcommand("sets", "Lists the sets on a storage, or on all");
    setsCommand->add_option("STORAGE", sets.storage, "As for backup");
    profileCommand = app.add_subcommand("profile", "Prints a profile, or what is wrong with it");
    profileCommand->add_option("PROFILE", profile.name, "Its name, as for --profile")->required();
    profileCommand->add_flag("--check", profile.check, "Says what is wrong with it, by line, instead");
    profileCommand->add_flag("--json", json, "Prints the result as JSON");
    for (CLI::App* command : {backupCommand, restoreCommand, setsCommand}) {
        command->fallthrough();  // the options of the device may come after the command
        command->add_flag("--json", json, "Prints the result as JSON");
        command->add_option("--wait", wait, "How long to wait for a device or card that another Quillbox uses")
            ->type_name("SECONDS")
            ->check(CLI::Range(0U, LongestWait).description(""));
    }
    for (CLI::App* command : {backupCommand, restoreCommand})
        command->add_flag("--quiet", quiet, "Shows no progress, and no result unless something is wrong");
    app.require_subcommand(0, 1);
}

std::optional<Command> CommandParser::given() const
{
    Command command;
    if (backupCommand->parsed())
        command.options = backup;
    else if (restoreCommand->parsed())
        command.options = restore;
    else if (setsCommand->parsed())
        command.options = sets;
    else if (profileCommand->parsed())
        command.options = profile;
    else
        return std::nullopt;
    command.json = json;
    command.quiet = quiet;
    command.wait = std::chrono::seconds(wait);
    return command;
}

}  // namespace platform::device
