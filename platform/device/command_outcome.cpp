#include "command_outcome.h"

#include "exit_codes.h"
#include "telling.h"
#include "terminal.h"
#include "trouble_sentences.h"

#include "kernel/troubles.h"

#include "ce/outcome.h"

#include <array>
#include <iostream>
#include <vector>

namespace platform::device {

namespace {

using Json = nlohmann::ordered_json;
using kernel::Since;
using kernel::Trouble;
using kernel::Troubled;

const char* wordFor(int exitCode)
{
    switch (exitCode) {
    case ExitComplete:
        return "complete";
    case ExitLeftOut:
        return "left out";
    case ExitStopped:
        return "stopped";
    default:
        return "nothing done";
    }
}

// Returns what was left out as a JSON array, with one object for each LeftOut. tellLeftOut() prints the same content to
// standard error.
Json leftOutJson()
{
    Json all = Json::array();
    for (const LeftOut& leftOut : whatWasLeftOut(Since::Start)) {
        Json one = {{"sentence", leftOut.sentence}};
        one["furtherOnes"] = leftOut.furtherOnes;
        one["unnamed"] = leftOut.unnamed;
        all.push_back(std::move(one));
    }
    return all;
}

// The names of files on the host can contain bytes that aren't UTF-8. JSON can't contain such bytes, so they are
// replaced.
void printJson(const Json& json)
{
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

std::string itemsText(const ItemCounts& items)
{
    std::vector<std::string> parts;
    if (items.files != 0)
        parts.push_back(counted(items.files, "file"));
    if (items.databases != 0)
        parts.push_back(counted(items.databases, "database"));
    if (items.registries != 0)
        parts.emplace_back("the registry");
    if (parts.empty())
        return "nothing";
    std::string text = parts.front();
    for (std::size_t i = 1; i < parts.size(); i++)
        text += (i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return text;
}

Json itemsJson(const ItemCounts& items)
{
    return {{"files", items.files}, {"databases", items.databases}, {"registry", items.registries}};
}

bool leftItemsUnreached()
{
    constexpr std::array Kinds = {Troubled::File, Troubled::Database, Troubled::Registry};
    for (const Troubled what : Kinds) {
        if (!kernel::troublesOf(Trouble::Reaching, what).empty())
            return true;
    }
    return false;
}

int endRefused(const Command& command, const std::string& reason, int exitCode)
{
    if (command.json)
        printJson({{"outcome", exitCode == ExitBadUsage ? "usage" : wordFor(exitCode)},
                   {"exitCode", exitCode},
                   {"reason", reason},
                   {"leftOut", leftOutJson()}});
    if (!reason.empty())
        (void)tell(reason, exitCode);
    return tellLeftOut(exitCode);
}

int endRun(const Command& command, RunEnd end, const std::string& sentence, const Json& facts)
{
    int exitCode = tellLeftOut(ExitComplete);
    if (end == RunEnd::LeftOut)
        exitCode = ExitLeftOut;
    else if (end != RunEnd::Over)
        exitCode = end == RunEnd::Stopped ? ExitStopped : ExitNothingDone;
    if (command.json) {
        Json all = {{"outcome", wordFor(exitCode)}, {"exitCode", exitCode}};
        all.update(facts);
        all["leftOut"] = leftOutJson();
        printJson(all);
    } else if (!command.quiet || exitCode != ExitComplete) {
        std::cout << onScreen(sentence) << '\n';
    }
    return exitCode;
}

int endDryRun(const Command& command, const std::string& sentence, const Json& facts)
{
    const int exitCode = tellLeftOut(ExitComplete);
    Json all = {{"outcome", "dry run"}, {"exitCode", exitCode}};
    all.update(facts);
    all["leftOut"] = leftOutJson();
    print(command, onScreen(sentence) + "\n", all);
    return exitCode;
}

void print(const Command& command, const std::string& text, const Json& json)
{
    if (command.json)
        printJson(json);
    else
        std::cout << text;
}

}  // namespace platform::device
