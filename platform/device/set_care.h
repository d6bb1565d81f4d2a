// set_care.h - what a backup does with a set when it is on its storage.
#pragma once

#include "command_session.h"

namespace platform::device {

// Writes the checksums of a set that the run has just written. A failure is reported as an item that isn't stored.
// `listPath` is on the device.
void sealNewSet(const Session& session, const std::u16string& listPath);

}  // namespace platform::device
