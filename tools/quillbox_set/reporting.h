// reporting.h - `quillbox-set report`: writes a page about several sets.
#pragma once

#include "archive/set_search.h"

#include <string>

namespace quillbox_set {

// Writes the page to `output` (see archive/host_output.h), and a line about it to standard output. Returns the exit
// code. It is 1 if a set is damaged. If there is no set, no page is written.
int writeReport(const archive::FoundSets& found, const std::string& output, bool force);

}  // namespace quillbox_set
