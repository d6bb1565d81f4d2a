// status_report.h - reports what is marked, which files the tree hides, and which set is the newest. The host (the
// program around src/) shows the report in a status bar.
#pragma once

// Passes the current status to ReportStatus (ce/status.h). Called after anything that can change the marks, the filter
// or the newest set. Takes almost no time if nothing has changed. During a backup or restore the lists contain the
// items of the run and not the marks, so the function isn't called then.
void ReportStatusToHost();

// Looks for the newest set on the device and on each card, for the next ReportStatusToHost. Called at the start and
// after each backup or restore.
void FindNewestSet();

// Looks for the newest set and reports the status. Called when a backup or restore has ended, since the run may have
// made a set or emptied the lists of marked items.
void ReportJobEnd();
