#include "command_runs.h"

#include "command_outcome.h"
#include "exit_codes.h"
#include "telling.h"
#include "terminal.h"

#include "kernel/run_progress.h"
#include "text/host_name.h"

#include "ce/command.h"

namespace platform::device {

namespace {

Existing policyOf(WithExisting said)
{
    return said == WithExisting::Replace ? Existing::Replace : Existing::Skip;
}

// Returns nothing if no file or database of the set exists on the device, if the options say what to do with the
// existing ones, or if the user can be asked. Otherwise returns a sentence that names the missing options.
std::optional<std::string> whatIsUnsaid(const RestoreOptions& options, const RunPlan& plan)
{
    const bool files = options.files == WithExisting::Unsaid && plan.existing.files != 0;
    const bool databases = options.databases == WithExisting::Unsaid && plan.existing.databases != 0;
    if ((!files && !databases) || userCanBeAsked())
        return std::nullopt;
    const ItemCounts existing = {files ? plan.existing.files : 0, databases ? plan.existing.databases : 0, 0};
    const std::string option = files && databases ? "--existing and --databases" : files ? "--existing" : "--databases";
    return "On the device there are already " + itemsText(existing) + " of the set, such as \"" +
           text::toUtf8(files ? plan.firstExistingFile : plan.firstExistingDatabase) + "\". Say skip or replace with " +
           option + ".";
}

int tellRestorePlan(const Session& session, const RunPlan& plan)
{
    const std::string existing = plan.existing.files + plan.existing.databases == 0
                                     ? "Nothing of it exists"
                                     : "Of these there exist already " + itemsText(plan.existing);
    return endDryRun(
        session.command, "To restore: " + itemsText(plan.items) + ". " + existing + ".",
        {{"items", itemsJson(plan.items)}, {"storedBytes", plan.bytes}, {"existing", itemsJson(plan.existing)}});
}

int endRestore(const Session& session, const ItemCounts& kept)
{
    const kernel::RunProgress run = kernel::runProgress();
    if (run.number == 0)
        return endRun(session.command, RunEnd::MadeNothing, "Nothing was restored.", {{"set", nullptr}});
    const bool stopped = leftItemsUnreached();
    const ItemCounts restored = {run.made[0], run.made[1], run.made[2]};
    std::string sentence = (stopped ? "Stopped. Restored " : "Restored ") + itemsText(restored) + ".";
    if (kept.files + kept.databases != 0)
        sentence += " Kept as they were: " + itemsText(kept) + ".";
    if (restored.registries != 0)
        sentence += " The registry takes effect when Quillbox starts again.";
    return endRun(session.command, stopped ? RunEnd::Stopped : RunEnd::Over, sentence,
                  {{"set", {{"list", text::toUtf8(run.listPath)}, {"path", session.hostPath(run.listPath)}}},
                   {"items", itemsJson(restored)},
                   {"kept", itemsJson(kept)},
                   {"storedBytes", run.bytesDone},
                   {"seconds", secondsOfRun()}});
}

RestoreRequest requestOf(const RestoreOptions& options, const std::u16string& listPath)
{
    const NamedItems items = itemsNamed(options.items);
    RestoreRequest request;
    request.listPath = listPath;
    request.everything = options.items.empty();
    request.paths = items.paths;
    request.databaseNames = items.databases;
    request.registry = !options.noRegistry && (request.everything || items.registry);
    return request;
}

}  // namespace

int runRestore(const Session& session, const RestoreOptions& options, const std::u16string& listPath)
{
    ProgressLine* shown = nullptr;
    ReplaceQuestion files(shown);
    ReplaceQuestion databases(shown);
    DWORD keptDatabases = 0;
    RestoreRequest request = requestOf(options, listPath);
    request.mayReplaceFile = [&](const WCHAR* path) { return files.ask("The file \"" + text::toUtf8(path) + "\""); };
    request.mayReplaceDatabase = [&](const WCHAR* name) {
        const bool yes = options.databases == WithExisting::Unsaid
                             ? databases.ask("The database \"" + text::toUtf8(name) + "\"")
                             : options.databases == WithExisting::Replace;
        keptDatabases += yes ? 0 : 1;
        return yes;
    };
    const RunPlan plan = PrepareRestore(request);
    if (plan.refused)
        return endRefused(session.command, text::toUtf8(plan.sentence), ExitNothingDone);
    if (options.dryRun)
        return tellRestorePlan(session, plan);
    if (const auto unsaid = whatIsUnsaid(options, plan))
        return endRefused(session.command, *unsaid, ExitBadUsage);
    {
        ProgressLine line(session.showsProgress());
        shown = &line;
        PerformRestore(options.files == WithExisting::Unsaid ? Existing::Ask : policyOf(options.files));
    }
    const DWORD keptFiles = options.files == WithExisting::Skip ? plan.existing.files : files.refused();
    return endRestore(session, {keptFiles, keptDatabases, 0});
}

}  // namespace platform::device
