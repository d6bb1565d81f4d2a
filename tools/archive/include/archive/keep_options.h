// keep_options.h - the options of a command line that say which sets to keep.
#pragma once

#include "archive/keep_rules.h"

#include <CLI/CLI.hpp>

namespace archive {

// Adds --keep-last, --keep-daily, --keep-weekly, --keep-monthly, --keep-yearly and --keep-within. `rules` must exist
// until the command line was parsed, because the parser writes to `rules`.
void addKeepOptions(CLI::App& command, KeepRules& rules);

}  // namespace archive
