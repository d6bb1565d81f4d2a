// common_arguments.h - what the commands of quillbox-set have in common.
#pragma once

#include "archive/set_search.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace quillbox_set {

// The arguments that several commands have. The options of each command are with it.
struct CommandLine {
    std::string set;
    std::string second;  // the argument after SET, or the only one of another kind
    std::vector<std::string> where;
    bool recursive = false;
    bool json = false;
    bool force = false;
    int exitCode = 0;

    archive::FoundSets found() const { return archive::searchSets(where, recursive); }
};

void addSet(CLI::App& command, CommandLine& line);
// WHERE and --recursive.
void addWhereAlone(CLI::App& command, CommandLine& line);
// The same and --json.
void addWhere(CLI::App& command, CommandLine& line);
void addJson(CLI::App& command, CommandLine& line);

// Prints that there is no set of this name. Returns the exit code.
int reportNoSet(const std::string& argument);

}  // namespace quillbox_set
