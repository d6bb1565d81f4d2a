// set_care.h - what a backup does with a set when it is on its storage.
#pragma once

#include "command_session.h"

#include <string>
#include <vector>

namespace platform::device {

// Writes the checksums of a set that the run has just written. A failure is reported as an item that isn't stored.
// `listPath` is on the device.
void sealNewSet(const Session& session, const std::u16string& listPath);

struct Rotation {
    std::vector<std::string> removed;  // list files on the host
    bool isWhole = true;               // otherwise standard error says what is wrong
};

// Removes the sets beside the new one that no rule keeps. The new set, damaged sets and the newest sound set stay.
[[nodiscard]] Rotation rotateSets(const Session& session, const std::u16string& listPath,
                                  const archive::KeepRules& rules);

}  // namespace platform::device
