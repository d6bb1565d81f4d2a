// program_status.h - the data that a status bar below the main window shows: the status that the program reported
// (ce/status.h), and the device on which the program runs.
//
// The window core reports a change of the status to the display as Change::Status, with a null window.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::window {

struct StatusState {
    std::u16string device;  // the name of the device's folder; empty if unknown
    std::uint32_t markedFiles = 0;
    std::uint64_t markedBytes = 0;
    std::uint32_t markedDatabases = 0;
    bool registryMarked = false;
    std::optional<std::vector<std::u16string>> shownExtensions;
    std::uint64_t shownSince = 0;  // as a FILETIME; 0: all files
    std::uint32_t hiddenAttributes = 0;
    bool deletesStored = false;
    std::u16string newestSet;         // empty: there is none, or the program hasn't reported one yet
    std::uint64_t newestSetTime = 0;  // as a FILETIME
    std::uint32_t jobs = 0;           // number of backups and restores that have ended; each may have changed the marks

    bool operator==(const StatusState&) const = default;
};

// Any thread may call these functions, but not inside Display::changed, where coreMutex is held already.
[[nodiscard]] StatusState programStatus();
void setDeviceName(std::u16string name);

}  // namespace platform::window
