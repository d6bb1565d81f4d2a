// command_outcome.h - reports how a command went: prints a sentence or a JSON object, and returns the exit code.
#pragma once

#include "command_options.h"

#include "ce/command.h"

#include <nlohmann/json.hpp>

#include <string>

namespace platform::device {

// "3 files, 1 database and the registry".
[[nodiscard]] std::string itemsText(const ItemCounts& items);
[[nodiscard]] nlohmann::ordered_json itemsJson(const ItemCounts& items);

// How a run (a backup or a restore) ended. `Over` means that the run reached its end, with or without failed items.
// endRun() itself finds out whether items were left out. `LeftOut` means that work other than storing or restoring
// items failed, for example writing the checksums of the set.
enum class RunEnd { Over, LeftOut, MadeNothing, Stopped };

// Returns true if a run was stopped before it reached all of its items.
[[nodiscard]] bool leftItemsUnreached();

// Reports that a command has done nothing, and returns `exitCode`. `reason` is a sentence, or empty if the program has
// reported the reason (ce/outcome.h). Prints `reason` and everything that was left out (tellLeftOut) to standard error.
// With --json, prints a JSON object to standard output, too.
int endRefused(const Command& command, const std::string& reason, int exitCode);

// Reports the end of a run and returns the exit code. Prints everything that was left out (tellLeftOut) to standard
// error. With --json, prints a JSON object with the facts to standard output. Without --json, prints the sentence to
// standard output, unless the run was complete and --quiet was given.
int endRun(const Command& command, RunEnd end, const std::string& sentence, const nlohmann::ordered_json& facts);

// The same for the end of a dry run. Its exit code is ExitLeftOut if something was left out, otherwise ExitComplete.
int endDryRun(const Command& command, const std::string& sentence, const nlohmann::ordered_json& facts);

// Prints a result that isn't the end of a run: `json` with --json, otherwise `text`.
void print(const Command& command, const std::string& text, const nlohmann::ordered_json& json);

}  // namespace platform::device
