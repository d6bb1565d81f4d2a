// archive_commands.h - the commands on several sets: verify, seal, find, diff, history, prune.
#pragma once

#include "common_arguments.h"

namespace quillbox_set {

// Each sets the exit code of `line` when the command line is parsed.
void addArchiveCommands(CLI::App& app, CommandLine& line);

}  // namespace quillbox_set
