// trouble_sentences.h - sentences for the user about all that a run couldn't read, write, store or restore.
#pragma once

#include "kernel/troubles.h"

#include <string>
#include <vector>

namespace platform::device {

struct LeftOut {
    std::string sentence;                  // the number of items, and the name of the first one with its reason
    std::vector<std::string> furtherOnes;  // names of the items after the first one, with their reasons
    std::size_t unnamed = 0;               // how many further items aren't named here
};

// Returns sentences about all that failed since the process or the latest job started (`since`): what the program
// reported (ce/outcome.h), and failed calls that it didn't report. Returns no sentences if all went well.
[[nodiscard]] std::vector<LeftOut> whatWasLeftOut(kernel::Since since);

}  // namespace platform::device
