// command_options.h - the commands of quillbox, which run without a window, and their options.
#pragma once

#include "archive/keep_rules.h"

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace CLI {
class App;
}

namespace platform::device {

struct BackupOptions {
    std::string to;  // a card's name, "Main device", or the path of a host folder with a slash in it
    bool all = false;
    bool files = false;
    bool databases = false;
    bool registry = false;
    std::vector<std::string> items;
    std::string comment;
    unsigned replaced = 0;  // the number of the set to replace; 0: use the first free number
    bool deletesSources = false;
    bool writesLog = false;
    bool leavesUnsealed = false;
    bool verifies = false;
    bool dryRun = false;
    archive::KeepRules keep;
};

enum class WithExisting { Unsaid, Replace, Skip };

struct RestoreOptions {
    std::string set;
    std::vector<std::string> items;
    WithExisting files = WithExisting::Unsaid;
    WithExisting databases = WithExisting::Unsaid;
    bool noRegistry = false;
    bool dryRun = false;
};

struct SetsOptions {
    std::string storage;  // empty: all storages
};

struct ProfileOptions {
    std::string name;
    bool check = false;
};

struct Command {
    std::variant<BackupOptions, RestoreOptions, SetsOptions, ProfileOptions> options;
    bool json = false;
    bool quiet = false;
    std::chrono::seconds wait{0};  // how long to wait for a device or card that another process uses
};

// Adds the commands with their options to a CLI::App, and holds the values that the app parses. The object must still
// exist when the app parses a command line.
struct CommandParser {
    BackupOptions backup;
    RestoreOptions restore;
    SetsOptions sets;
    ProfileOptions profile;
    bool json = false;
    bool quiet = false;
    unsigned wait = 0;
    CLI::App* backupCommand = nullptr;
    CLI::App* restoreCommand = nullptr;
    CLI::App* setsCommand = nullptr;
    CLI::App* profileCommand = nullptr;

    void addTo(CLI::App& app);
    // Returns the command on the parsed command line, or nothing if there is no command.
    [[nodiscard]] std::optional<Command> given() const;
};

}  // namespace platform::device
