// trouble_sentences.h - what a run of the program couldn't read, write, store or restore, in sentences for its user.
#pragma once

#include "kernel/troubles.h"

#include <string>
#include <vector>

namespace platform::device {

struct LeftOut {
    std::string sentence;                  // how many there are, and the first of them with its reason
    std::vector<std::string> furtherOnes;  // the names behind the first, with their reasons
    std::size_t unnamed = 0;               // how many more there are
};

// None if all went well. The program itself may have passed over it in silence.
[[nodiscard]] std::vector<LeftOut> whatWasLeftOut(kernel::Since since);

}  // namespace platform::device
