// edit.h - what an edit control holds beside its text.
#pragma once

#include "edit_text.h"
#include "window/core.h"

namespace platform::window {

struct EditState : ControlState {
    explicit EditState(DWORD style);

    EditSelection selection;
    std::size_t limit;  // characters that the user may bring it to
    bool readOnly;
};

}  // namespace platform::window
