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

// How a run ended, apart from what it has reported.
// LeftOut: something that isn't an item of the run has failed.
enum class RunEnd { Over, LeftOut, MadeNothing, Stopped };

// Whether a run has left items out because it was stopped.
[[nodiscard]] bool leftItemsUnreached();

// Ends a command that has done nothing, because of this reason. An empty one was reported by the program.
int endRefused(const Command& command, const std::string& reason, int exitCode);

// Ends a run. Standard error names what was left out, the JSON object has the facts, and the sentence is printed unless
// the command is quiet and the run complete. Returns the exit code.
int endRun(const Command& command, RunEnd end, const std::string& sentence, const nlohmann::ordered_json& facts);

// Prints the result of a command that isn't a run.
void print(const Command& command, const std::string& text, const nlohmann::ordered_json& json);

}  // namespace platform::device
