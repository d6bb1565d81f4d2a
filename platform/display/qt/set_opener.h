// set_opener.h - opens the dialog for restoring from a set, after the user has opened the set in the file manager.
//
// SetOpener posts the input that would lead the user to this dialog: the command for a partial restore, a click on the
// set's row, and OK. If the program opens another dialog instead, SetOpener stops, and the user does the rest.
#pragma once

#include "ce/types.h"

#include <optional>
#include <string>

namespace platform::qt {

class SetOpener {
public:
    // Begins to open the set. `listFile` is the path of the set's list file on the device.
    void begin(std::u16string listFile);

    // If the program waits for input, posts the next input. Must be called after begin() and whenever the window core
    // has reported changes.
    void step();

private:
    bool choose(HWND dialog) const;

    std::optional<std::u16string> listFile_;
    bool commanded_ = false;
};

}  // namespace platform::qt
