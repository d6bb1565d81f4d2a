#include "command_run.h"

#include "command_names.h"
#include "command_outcome.h"
#include "command_runs.h"
#include "command_session.h"
#include "exit_codes.h"

#include "kernel/job.h"

namespace platform::device {

int runCommand(const CommandLine& line, HINSTANCE instance)
{
    if (const auto* profile = std::get_if<ProfileOptions>(&line.command->options))
        return runProfile(*line.command, *profile);
    kernel::stopEveryJobAtSignal();
    if (const auto* backup = std::get_if<BackupOptions>(&line.command->options)) {
        return onDevice(line, instance, storageNamed(backup->to), false,
                        [&](const Session& session) { return runBackup(session, *backup); });
    }
    if (const auto* restore = std::get_if<RestoreOptions>(&line.command->options)) {
        const NamedSet set = setNamed(restore->set);
        if (!set.refusal.empty())
            return endRefused(*line.command, set.refusal, ExitNothingDone);
        return onDevice(line, instance, {}, true, [&](const Session& session) {
            if (!set.listFile)
                return runRestore(session, *restore, set.path);
            const ShownSet shown = session.opened.device->showSet(*set.listFile);
            return shown.error.empty() ? runRestore(session, *restore, shown.listFile)
                                       : endRefused(session.command, shown.error, ExitNothingDone);
        });
    }
    const auto& sets = std::get<SetsOptions>(line.command->options);
    return onDevice(line, instance, storageNamed(sets.storage), false,
                    [&](const Session& session) { return runSets(session, sets); });
}

}  // namespace platform::device
