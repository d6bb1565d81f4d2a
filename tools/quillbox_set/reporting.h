// reporting.h - `quillbox-set report`: writes a page about several sets.
#pragma once

#include "archive/set_search.h"

#include <string>

namespace quillbox_set {

// Writes the page to `output` (see archive/host_output.h). Also prints a line about the page, unless the page itself
// goes to standard output. Returns the exit code, which isn't exitGood if a set is damaged. If there is no set, or if
// `output` is a file of one of the sets, no page is written.
int writeReport(const archive::FoundSets& found, const std::string& output, bool force);

}  // namespace quillbox_set
