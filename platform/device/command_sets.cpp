#include "command_runs.h"

#include "command_outcome.h"
#include "exit_codes.h"
#include "telling.h"
#include "terminal.h"

#include "text/host_name.h"

#include "ce/command.h"

#include <array>
#include <ctime>

namespace platform::device {

namespace {

using Json = nlohmann::ordered_json;

// "2026-11-25 22:10:03", local time.
std::string timeText(const FILETIME& written)
{
    constexpr std::int64_t SecondsFrom1601 = 11644473600;
    constexpr std::uint64_t StepsOfSecond = 10'000'000;
    const std::uint64_t steps = std::uint64_t{written.dwHighDateTime} << 32 | written.dwLowDateTime;
    const auto seconds = static_cast<std::time_t>(static_cast<std::int64_t>(steps / StepsOfSecond) - SecondsFrom1601);
    std::tm local{};
    std::array<char, 32> text{};
    if (::localtime_r(&seconds, &local) != nullptr)
        (void)std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return text.data();
}

std::string firstLine(const std::u16string& comment)
{
    return text::toUtf8(comment.substr(0, comment.find_first_of(u"\r\n")));
}

}  // namespace

int runSets(const Session& session, const SetsOptions& options)
{
    std::optional<std::u16string> path;
    if (!options.storage.empty())
        path = session.storage.path;
    if (path && !IsStorage(*path))
        return endRefused(session.command, "There is no card \"" + text::toUtf8(*path) + "\" on the device.",
                          ExitNothingDone);
    std::string lines;
    Json all = Json::array();
    for (const SetSummary& set : FindSets(path)) {
        const ItemCounts& items = set.items;
        const std::string list = text::toUtf8(set.listPath);
        lines +=
            onScreen(timeText(set.written) + "  " + counted(items.files + items.databases + items.registries, "item") +
                     "  " + sizeText(set.bytes) + "  " + list + (set.sealed ? "  (sealed)" : "") +
                     (set.damaged ? "  (damaged)" : "") + "  " + firstLine(set.comment)) +
            "\n";
        all.push_back({{"list", list},
                       {"path", session.hostPath(set.listPath)},
                       {"written", timeText(set.written)},
                       {"comment", text::toUtf8(set.comment)},
                       {"items", itemsJson(items)},
                       {"storedBytes", set.bytes},
                       {"sealed", set.sealed},
                       {"damaged", set.damaged}});
    }
    print(session.command, lines.empty() ? "There are no sets.\n" : lines, {{"sets", all}});
    return tellLeftOut(ExitComplete);
}

}  // namespace platform::device
