// set_opener.h - takes the user who opens a set to the selection of what to restore from it.
//
// It does what the user would do for that: the command for a partial restore, the click on the set's row, OK. If the
// program asks anything else meanwhile, it leaves the rest to the user.
#pragma once

#include "ce/types.h"

#include <optional>
#include <string>

namespace platform::qt {

class SetOpener {
public:
    // `listFile` is the set's list on the device.
    void begin(std::u16string listFile);

    // Does the next step if the program waits for it. To be called after each change.
    void step();

private:
    bool choose(HWND dialog) const;

    std::optional<std::u16string> listFile_;
    bool commanded_ = false;
};

}  // namespace platform::qt
