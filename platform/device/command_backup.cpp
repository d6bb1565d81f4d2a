#include "command_runs.h"

#include "command_outcome.h"
#include "data_digest.h"
#include "exit_codes.h"
#include "refusal.h"
#include "set_care.h"
#include "telling.h"
#include "terminal.h"
#include "trouble_sentences.h"

#include "kernel/run_progress.h"
#include "text/host_name.h"

#include "ce/command.h"
#include "ce/outcome.h"

#include <iostream>

namespace platform::device {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// Returns the path of a storage in quotes, or "the device" for the device's root.
std::string storageText(const std::u16string& path)
{
    return path.empty() ? "the device" : "\"" + text::toUtf8(path) + "\"";
}

std::string planOf(const Session& session, const RunPlan& plan, const std::u16string& storage)
{
    std::string sentence = itemsText(plan.items) + ", " + sizeText(plan.bytes) + ". ";
    const auto room = session.opened.device->roomIn(storage);
    if (!room)
        return sentence + "The room on " + storageText(storage) + " isn't known.";
    sentence += storageText(storage) + " has room for " + sizeText(*room) + ".";
    return plan.bytes > *room ? sentence + " That is enough only if they can be compressed." : sentence;
}

int tellBackupPlan(const Session& session, const RunPlan& plan, const std::u16string& storage)
{
    const auto room = session.opened.device->roomIn(storage);
    return endDryRun(
        session.command, "To store: " + planOf(session, plan, storage),
        {{"items", itemsJson(plan.items)}, {"bytes", plan.bytes}, {"room", room ? Json(*room) : Json(nullptr)}});
}

BackupRequest requestOf(const BackupOptions& options, const Session& session)
{
    const NamedItems items = itemsNamed(options.items);
    const bool unsaid = !options.files && !options.databases && !options.registry && options.items.empty();
    const bool all = options.all || unsaid;
    return {.files = all || options.files,
            .databases = all || options.databases,
            .registry = all || options.registry || items.registry,
            .paths = items.paths,
            .databaseNames = items.databases,
            .storage = session.storage.path,
            .leavesStorageOut = session.storage.isNew,
            .comment = text::fromUtf8(options.comment),
            .replaced = options.replaced,
            .deletesSources = options.deletesSources,
            .writesLog = options.writesLog,
            .verifies = options.verifies,
            .onlyPlans = options.dryRun};
}

Rotation rotated(const Session& session, const BackupOptions& options, DWORD number, bool complete)
{
    if (options.keep.areEmpty() || number == 0)
        return {};
    if (complete)
        return rotateSets(session, kernel::runProgress().listPath, options.keep);
    (void)tell("No old set was removed, because the new one isn't complete.", ExitLeftOut);
    return {};
}

struct MadeSet {
    DWORD number = 0;      // 0: no set was made
    bool isWhole = false;  // the set has everything that was to be stored
    SealEnd seal = SealEnd::NotTried;
};

int endBackup(const Session& session, const BackupOptions& options, const MadeSet& made)
{
    const kernel::RunProgress run = kernel::runProgress();
    const auto set = made.number != 0 ? SummaryOfSet(run.listPath.c_str()) : std::nullopt;
    const bool stopped = made.seal == SealEnd::Stopped || leftItemsUnreached() || (made.number == 0 && JobIsToStop());
    if (!set && made.number != 0) {  // for example, the card was taken out
        (void)rotated(session, options, made.number, false);
        return endRun(session.command, RunEnd::LeftOut,
                      "Set " + std::to_string(made.number) + " can't be read any more.", {{"set", nullptr}});
    }
    if (!set)
        return endRun(session.command, stopped ? RunEnd::Stopped : RunEnd::MadeNothing,
                      stopped ? "Stopped before a set was made." : "No set was made.", {{"set", nullptr}});
    const std::string list = session.hostPath(set->listPath);
    const bool complete = !stopped && made.isWhole;
    const Rotation rotation = rotated(session, options, made.number, complete);
    const bool isWhole = rotation.isWhole && made.seal != SealEnd::Failed;
    const RunEnd end = stopped || rotation.isStopped ? RunEnd::Stopped : isWhole ? RunEnd::Over : RunEnd::LeftOut;
    const std::size_t gone = rotation.removed.size();
    const std::string begin = end == RunEnd::Stopped ? "Stopped. Set " : "Set ";
    const std::string state = complete ? " is complete: " : stopped ? " has " : " isn't complete. It has ";
    return endRun(session.command, end,
                  begin + std::to_string(made.number) + state + itemsText(set->items) + ", " + sizeText(set->bytes) +
                      " in " + quoted(fs::path(list)) + "." +
                      (made.seal == SealEnd::Failed ? " It has no checksums." : "") +
                      (gone != 0 ? " Removed " + counted(gone, "old set") + "." : ""),
                  {{"set", {{"number", made.number}, {"list", text::toUtf8(set->listPath)}, {"path", list}}},
                   {"items", itemsJson(set->items)},
                   {"bytes", run.bytesDone},
                   {"storedBytes", set->bytes},
                   {"sealed", made.seal == SealEnd::Sealed},
                   {"removed", rotation.removed},
                   {"seconds", secondsOfRun()}});
}

}  // namespace

int runBackup(const Session& session, const BackupOptions& options)
{
    const BackupRequest request = requestOf(options, session);
    const RunPlan plan = PrepareBackup(request);
    if (JobIsToStop())
        return endBackup(session, options, {});
    if (plan.refused)
        return endRefused(session.command, text::toUtf8(plan.sentence), ExitNothingDone);
    if (options.dryRun)
        return tellBackupPlan(session, plan, request.storage);
    if (session.showsProgress())
        std::cerr << onScreen("Storing " + planOf(session, plan, request.storage)) << '\n';
    MadeSet made;
    DataDigest digest(session, !options.leavesUnsealed);
    {
        const ProgressLine line(session.showsProgress());
        made.number = PerformBackup();
    }
    made.isWhole = whatWasLeftOut(kernel::Since::Start).empty();
    if (made.number != 0 && !options.leavesUnsealed)
        made.seal =
            JobIsToStop() ? SealEnd::Stopped : sealNewSet(session, kernel::runProgress().listPath, digest.finish());
    return endBackup(session, options, made);
}

}  // namespace platform::device
