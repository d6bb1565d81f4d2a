// status_texts.h - the sentences of the status bar and the progress window, with numbers and dates in the format of the
// user's locale.
#pragma once

#include "run_view.h"
#include "window/program_status.h"

#include <QString>

namespace platform::qt {

// Says what the next backup of selected items will store: "3 files (1.2 MB) and the registry are marked".
QString markedText(const window::StatusState& status);
// Says which files the tree hides. The text is empty if there is no filter.
QString filterText(const window::StatusState& status);
// "Newest set: 11/25/26 10:19 PM"; empty if there is none.
QString newestSetText(const window::StatusState& status);

// "1,204 of 40,000 items".
QString itemsText(const RunView& run);
// "38 MB of 120 MB".
QString amountText(const RunView& run);
// "0:12 so far, about 0:45 left".
QString timeText(const RunView& run);
// "Closes when the backup is done."
QString closingText(const RunView& run);

// Texts for the desktop: "A backup is underway", and when the run has ended, "The backup is done".
QString runReason(const kernel::RunProgress& run);
QString endedText(const kernel::RunProgress& run);

// What a run has made: "Set 3 on \Stick: 214 files, 3 databases, registry, 38 MB in 12 s". `leftOut` is the number of
// items that the run couldn't store or restore, or that it didn't reach because it was stopped.
QString outcomeText(const kernel::RunProgress& run, std::size_t leftOut);

}  // namespace platform::qt
