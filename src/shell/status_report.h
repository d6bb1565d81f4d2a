// status_report.h - reports to the host what is marked, which files the tree hides, and which set is the newest.
#pragma once

// Called after whatever can change one of them. Costs next to nothing if nothing has changed. During a backup or
// restore it isn't called: the lists contain what that works with.
void ReportStatusToHost();

// Looks for the newest set, on each card and on the device. Called at the start.
void FindNewestSet();

// A backup or restore has ended. It may have made a set, and emptied the lists of what is marked.
void ReportJobEnd();
