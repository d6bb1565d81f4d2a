// command_session.h - opens the device for a command and runs the command on it.
#pragma once

#include "command_line.h"
#include "command_names.h"

#include "ce/types.h"

#include <functional>

namespace platform::device {

struct Session {
    const Command& command;
    OpenResult opened;
    ShownStorage storage;  // where a backup stores its set, or where `sets` looks for sets

    // Whether the user sees how far the run has come.
    [[nodiscard]] bool showsProgress() const;
    [[nodiscard]] std::string hostPath(const std::u16string& path) const;
};

// Opens the device, calls run(session) and returns its exit code. If the device can't be opened, reports that and
// returns ExitNothingDone. If another process uses the device or one of its cards, waits at most as long as --wait
// says. If `storage` is a folder of the host, the device shows this folder as a card. If `storage` is a name that the
// device doesn't have, and the user has a medium with that name, the device shows the medium as a card. If the device
// doesn't exist, it is created if `mayMake` is true, and the command is refused if `mayMake` is false.
int onDevice(const CommandLine& line, HINSTANCE instance, const NamedStorage& storage, bool mayMake,
             const std::function<int(const Session& session)>& run);

// The seconds that the run took.
[[nodiscard]] double secondsOfRun();

}  // namespace platform::device
