// command_outcome.h - how a command went: a sentence or a JSON object on standard output, and the exit code.
#pragma once

#include "command_options.h"

#include "ce/command.h"

#include <nlohmann/json.hpp>

#include <string>

namespace platform::device {

// "3 files, 1 database and the registry".
[[nodiscard]] std::string itemsText(const ItemCounts& items);
[[nodiscard]] nlohmann::ordered_json itemsJson(const ItemCounts& items);

// How a run (a backup or a restore) ended. `Over` doesn't say whether items were left out, because endRun() finds that
// out itself. `LeftOut` means that something other than an item failed, for example writing the checksums of the set.
enum class RunEnd { Over, LeftOut, MadeNothing, Stopped };

// Returns true if a run has left items out because it was stopped.
[[nodiscard]] bool leftItemsUnreached();

// Reports that a command has done nothing, and returns `exitCode`. `reason` is a sentence, or empty if the program has
// reported the reason (ce/outcome.h). A reported reason is printed in any case.
int endRefused(const Command& command, const std::string& reason, int exitCode);

// Reports the end of a run and returns the exit code. Prints what was left out to standard error. With --json, prints a
// JSON object with the facts. Without --json, prints the sentence, unless the run was complete and --quiet was given.
int endRun(const Command& command, RunEnd end, const std::string& sentence, const nlohmann::ordered_json& facts);

// Prints a result that isn't the end of a run: `json` with --json, otherwise `text`.
void print(const Command& command, const std::string& text, const nlohmann::ordered_json& json);

}  // namespace platform::device
