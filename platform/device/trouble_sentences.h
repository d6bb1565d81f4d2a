// trouble_sentences.h - sentences for the user about all that a run couldn't read, write, store or restore.
#pragma once

#include "kernel/troubles.h"

#include <string>
#include <vector>

namespace platform::device {

struct LeftOut {
    std::string sentence;                  // their number, and the name of the first with its reason
    std::vector<std::string> furtherOnes;  // names after the first, with their reasons
    std::size_t unnamed = 0;               // number of further ones without a name here
};

// Empty if all went well. The program itself may have reported nothing to the user.
[[nodiscard]] std::vector<LeftOut> whatWasLeftOut(kernel::Since since);

}  // namespace platform::device
