// date_picker.h - what a date picker holds.
#pragma once

#include "window/core.h"

#include "ce/date_picker.h"

#include <array>

namespace platform::window {

enum class DateField { Day, Month, Year };

struct DatePickerState : ControlState {
    DatePickerState();

    SYSTEMTIME date{};
    std::array<DateField, 3> order{};  // from left to right, as the user's short dates have them
    std::size_t field = 0;             // in which the keyboard stands
    int typed = 0;                     // digits typed into it so far
    int typedDigits = 0;
};

}  // namespace platform::window
