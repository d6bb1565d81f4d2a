// report.h - writes the contents of several sets as one page for a browser (docs/archive.md, "report").
#pragma once

#include "archive/long_work.h"
#include "archive/set_date.h"
#include "archive/set_files.h"

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace set_report {

struct ReportOutcome {
    std::size_t sets = 0;
    std::size_t damagedSets = 0;
    bool isShortened = false;  // the page would have become too large, so it lacks contents of some sets and names them
};

// Verifies the sets and writes the page. `faults` are sentences about folders that can't be read or contain no sets.
// The page shows these sentences. The state of `out` shows whether the whole page could be written.
//
// Keeps in memory the names and the states of all items, of all records, and of all values of the registry. If an item,
// record or value has the same state in successive sets, these sets share one copy of the state. RunTable limits the
// memory.
ReportOutcome writeReport(const std::vector<archive::SetFiles>& sets, const std::vector<std::string>& faults,
                          std::ostream& out, archive::Progress& progress);

}  // namespace set_report
