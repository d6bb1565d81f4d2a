// command_runs.h - the commands of quillbox. Each function reports how its command went and returns the exit code.
#pragma once

#include "command_names.h"
#include "command_session.h"

namespace platform::device {

int runBackup(const Session& session, const BackupOptions& options);
// `listPath` is the path of the set's list file on the device.
int runRestore(const Session& session, const RestoreOptions& options, const std::u16string& listPath);
int runSets(const Session& session, const SetsOptions& options);

int runProfile(const Command& command, const ProfileOptions& options);

}  // namespace platform::device
