// progress_bar.h - what a progress bar holds.
#pragma once

#include "window/core.h"

namespace platform::window {

struct ProgressState : ControlState {
    int low = 0;
    int high = 100;
    int step = 10;
    int position = 0;
};

}  // namespace platform::window
