// common_arguments.h - the command-line arguments that several commands of quillbox-set share.
#pragma once

#include "archive/set_search.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace quillbox_set {

// The values of the shared arguments, and the exit code. Options of only one command are in a struct of that command.
struct CommandLine {
    std::string set;
    std::string second;  // a further argument, such as NEW of `diff` or STORAGE of `prune`
    std::vector<std::string> where;
    bool recursive = false;
    bool json = false;
    bool force = false;
    int exitCode = 0;

    archive::FoundSets found() const { return archive::searchSets(where, recursive); }
};

void addSet(CLI::App& command, CommandLine& line);
// Adds WHERE and --recursive.
void addWhereAlone(CLI::App& command, CommandLine& line);
// Adds WHERE, --recursive and --json.
void addWhere(CLI::App& command, CommandLine& line);
void addJson(CLI::App& command, CommandLine& line);

// Prints on standard error that `argument` doesn't name a set. Returns exitNoSet.
int reportNoSet(const std::string& argument);

}  // namespace quillbox_set
