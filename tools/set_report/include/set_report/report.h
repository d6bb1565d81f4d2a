// report.h - several sets as one page for a browser (docs/archive.md, "report").
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
    bool isShortened = false;  // the page would have become too large, so it names what it leaves out
};

// Verifies the sets and writes the page. `faults` are sentences for the page about what couldn't be found. The state of
// `out` shows whether all of it could be written.
//
// Keeps in memory the names and the states of all items, records and values of the registry, each state once for all
// successive sets that have it. RunTable limits that.
ReportOutcome writeReport(const std::vector<archive::SetFiles>& sets, const std::vector<std::string>& faults,
                          std::ostream& out, archive::Progress& progress);

}  // namespace set_report
