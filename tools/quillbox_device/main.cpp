// main.cpp - the command line of quillbox-device.

#include "archive/long_work.h"
#include "coverage.h"
#include "database_commands.h"
#include "device_commands.h"
#include "failure.h"
#include "registry_commands.h"
#include "screen_text/screen_text.h"

#include "kernel/error_reason.h"
#include "kernel/standard_streams.h"
#include "text/host_name.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <iostream>
#include <sstream>

namespace {

using namespace quillbox_device;
using database_formats::Format;

struct CommandLine {
    std::string device;
    std::string name;
    std::string folder;
    std::string file = "-";
    std::optional<std::string> database;
    std::optional<std::uint64_t> capacity;
    std::vector<std::string> where;
    bool recursive = false;
    int exitCode = exitGood;
    bool plainFolder = false;
    bool demonstration = false;
    bool force = false;
    bool replace = false;
    bool add = false;
    bool json = false;
    std::string format;
    std::string columns;
};

std::optional<Format> formatOf(const CommandLine& line)
{
    return line.format.empty() ? std::nullopt : database_formats::formatNamed(line.format);
}

// Returns why the text isn't a valid capacity, or an empty text if it is valid. The option parser would convert a
// negative number to a large one, and a device stores a capacity in 63 bits.
std::string capacityFault(const std::string& text)
{
    std::int64_t bytes = -1;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, bytes);
    return error == std::errc() && stopped == end && bytes >= 0 ? "" : "\"" + text + "\" is not a number of bytes";
}

CLI::App* addCommand(CLI::App& parent, CommandLine& line, const char* name, const char* what)
{
    CLI::App* command = parent.add_subcommand(name, what);
    command->add_option("DEVICE", line.device, "the device's folder")->required();
    return command;
}

void addJson(CLI::App& command, CommandLine& line)
{
    command.add_flag("--json", line.json, "prints JSON for other programs");
}

void addCards(CLI::App& app, CommandLine& line)
{
    CLI::App* card = app.add_subcommand("card", "folders of this computer that the device shows at every start");
    card->require_subcommand(1);
    CLI::App* list = addCommand(*card, line, "list", "prints these folders");
    list->callback([&line] { listCards(line.device, line.json); });
    addJson(*list, line);
    CLI::App* add = addCommand(*card, line, "add", "adds a folder");
    add->add_option("NAME", line.name, "its name on the device; nothing in the device's root may have it")->required();
    add->add_option("DIR", line.folder, "the folder")->required();
    add->add_option("--capacity", line.capacity, "its size limit in bytes")->type_name("BYTES")->check(capacityFault);
    add->add_flag("--folder", line.plainFolder, "a plain folder, not a card");
    add->callback([&line] { addCard(line.device, line.name, line.folder, line.capacity, line.plainFolder); });
    CLI::App* remove = addCommand(*card, line, "remove", "removes one from the device; its content stays");
    remove->add_option("NAME", line.name, "its name on the device")->required();
    remove->callback([&line] { removeCard(line.device, line.name); });
}

void addRegistry(CLI::App& app, CommandLine& line)
{
    CLI::App* registry = app.add_subcommand("registry", "the registry as a .reg file");
    registry->require_subcommand(1);
    CLI::App* out = addCommand(*registry, line, "export", "writes the registry to a file");
    out->add_option("FILE", line.file, "the file; default, or -: standard output");
    out->add_flag("--force", line.force, "replaces a file that exists");
    out->callback([&line] { exportRegistry(line.device, line.file, line.force); });
    CLI::App* in = addCommand(*registry, line, "import", "sets the keys and values of a file, all of them or none");
    in->add_option("FILE", line.file, "the file; -: standard input")->required();
    in->callback([&line] { importRegistry(line.device, line.file); });
}

void addFormat(CLI::App& command, CommandLine& line)
{
    command
        .add_option("--form", line.format,
                    "jsonl (any database, without loss), vcard (contacts), ical (appointments, tasks) or csv; "
                    "default: by the file's extension .vcf, .ics or .csv, otherwise jsonl")
        ->type_name("jsonl|vcard|ical|csv")
        ->check(CLI::IsMember({"jsonl", "vcard", "ical", "csv"}).description(""));
}

void addDatabases(CLI::App& app, CommandLine& line)
{
    CLI::App* database = app.add_subcommand("database", "databases as JSON lines, vCard, iCalendar, CSV");
    database->require_subcommand(1);
    CLI::App* list = addCommand(*database, line, "list", "prints their names");
    list->callback([&line] { listDatabases(line.device, line.json); });
    addJson(*list, line);
    CLI::App* out = addCommand(*database, line, "export", "writes one database, or all that the format can hold");
    out->add_option("FILE", line.file, "the file; default, or -: standard output");
    out->add_option("--name", line.database, "the database; default: all that the format can hold")
        ->type_name("DATABASE");
    addFormat(*out, line);
    out->add_flag("--force", line.force, "replaces a file that exists");
    out->callback([&line] { exportDatabases(line.device, line.database, formatOf(line), line.file, line.force); });
    CLI::App* in = addCommand(*database, line, "import", "imports the databases of a file, all of them or none");
    in->add_option("FILE", line.file, "the file; -: standard input")->required();
    in->add_option("--name", line.database,
                   "the database; default: the name in the file, or the device's database for the format")
        ->type_name("DATABASE");
    addFormat(*in, line);
    in->add_option("--columns", line.columns,
                   "of a CSV address book: lines COLUMN = PROPERTY, such as Surname = LastName")
        ->type_name("FILE");
    CLI::Option* replace = in->add_flag("--replace", line.replace, "replaces databases that exist");
    in->add_flag("--add", line.add, "adds the records that existing databases don't have yet")->excludes(replace);
    in->callback([&line] {
        const Existing existing = line.replace ? Existing::Replaced : line.add ? Existing::AddedTo : Existing::Refused;
        importDatabases(line.device, line.database, formatOf(line), line.file, existing, line.columns);
    });
}

void addCovered(CLI::App& app, CommandLine& line)
{
    CLI::App* covered = addCommand(app, line, "covered",
                                   "says whether sound sets hold everything on the device, so that it may be erased");
    covered->add_option("WHERE", line.where, "sets, or folders with sets such as a card")->required();
    covered->add_flag("--recursive", line.recursive, "searches folders in depth");
    addJson(*covered, line);
    covered->footer(
        "Changes nothing on the device. Cards aren't compared, because they aren't erased with it.\n"
        "Exit code: 0 everything is covered; 1 not everything, or a change meanwhile; 2 no such device or set.");
    covered->callback([&line] {
        archive::catchSignals();
        line.exitCode = showCoverage(line.device, line.where, line.recursive, line.json);
    });
}

int run(int count, char** arguments)
{
    CLI::App app("Shows and changes a device. Quillbox must not be running on it.\n"
                 "Exit code: 0 done; 1 not done, and nothing was changed (unless it says so); 2 bad usage, or no such "
                 "device or file.",
                 "quillbox-device");
    app.set_version_flag("--version", "quillbox-device " QUILLBOX_VERSION);
    app.require_subcommand(1);
    CommandLine line;
    CLI::App* shown = addCommand(app, line, "show", "prints what the device contains");
    addJson(*shown, line);
    shown->callback([&line] { show(line.device, line.json); });
    CLI::App* make = addCommand(app, line, "init", "makes a device of a folder that is missing or empty");
    make->add_flag("--demonstration", line.demonstration, "with sample content");
    make->callback([&line] { init(line.device, line.demonstration); });
    addCovered(app, line);
    addCards(app, line);
    addRegistry(app, line);
    addDatabases(app, line);
    try {
        app.parse(count, arguments);
        return line.exitCode;
    } catch (const CLI::ParseError& error) {
        std::ostringstream said;
        const int code = app.exit(error, std::cout, said);
        std::cerr << screen_text::linesOnScreen(platform::text::fromUtf8(said.str()), "");
        return code == 0 ? exitGood : exitBadUsage;
    }
}

// Prints the message of the exception and returns `exitCode`. The message can contain names of files and databases, so
// onScreen() replaces the control characters in it.
int report(const std::exception& error, int exitCode)
{
    std::cerr << "quillbox-device: " << screen_text::onScreen(std::string_view(platform::kernel::reasonOf(error)))
              << '\n';
    return exitCode;
}

}  // namespace

int main(int count, char** arguments)
{
    platform::kernel::secureStandardStreams();
    try {
        const int exitCode = run(count, arguments);
        if (!platform::kernel::standardOutputIsWritten())
            throw Failure("Standard output can't be written.");
        return exitCode;
    } catch (const archive::Stopped&) {
        archive::endBySignal();
    } catch (const Failure& failure) {
        return report(failure, failure.exitCode());
    } catch (const std::exception& error) {
        return report(error, exitFailed);
    }
}
