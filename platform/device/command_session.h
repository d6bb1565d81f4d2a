// command_session.h - an open device with the command that runs on it.
#pragma once

#include "command_line.h"
#include "command_names.h"

#include "ce/types.h"

#include <functional>

namespace platform::device {

struct Session {
    const Command& command;
    OpenResult opened;
    ShownStorage storage;  // where the command stores sets or looks for them

    // Whether the user sees how far the run has come.
    [[nodiscard]] bool showsProgress() const;
    [[nodiscard]] std::string hostPath(const std::u16string& path) const;
};

// Opens the device, waiting for it as long as the command says, and calls run(session) for the exit code. A folder of
// the host is shown as a card, and so is a medium of the user whose name no folder of the device has. A device that
// doesn't exist is refused unless `mayMake`.
int onDevice(const CommandLine& line, HINSTANCE instance, const NamedStorage& storage, bool mayMake,
             const std::function<int(const Session& session)>& run);

// The seconds that the run took.
[[nodiscard]] double secondsOfRun();

}  // namespace platform::device
