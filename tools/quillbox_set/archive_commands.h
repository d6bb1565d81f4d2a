// archive_commands.h - the commands on several sets: verify, seal, explain, find, diff, history, prune, report.
#pragma once

#include "common_arguments.h"

namespace quillbox_set {

// Each command runs when the command line is parsed, and sets the exit code of `line`.
void addArchiveCommands(CLI::App& app, CommandLine& line);

}  // namespace quillbox_set
