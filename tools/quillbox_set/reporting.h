// reporting.h - writes a page about several sets.
#pragma once

#include "archive/set_search.h"

#include <string>

namespace quillbox_set {

// Writes the page to `output` (see archive/host_output.h), and a line about it to standard output. Returns the exit
// code: 1 also if a set is damaged. Without any set there is no page.
int writeReport(const archive::FoundSets& found, const std::string& output, bool force);

}  // namespace quillbox_set
