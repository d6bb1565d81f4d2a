// edit.h - what an edit control holds beside its text.
#pragma once

#include "core.h"
#include "edit_text.h"

namespace platform::window {

struct EditState : ControlState {
    explicit EditState(DWORD style);

    EditSelection selection;
    std::size_t limit;  // characters that the user may bring it to
    bool readOnly;
};

}  // namespace platform::window
