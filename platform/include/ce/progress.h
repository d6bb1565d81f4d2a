// ce/progress.h - reports to the host how far a run (one backup or restore) has come. The host (the platform's process,
// which runs the program) may show it.
//
// The program's own windows don't show the number of items and bytes that are still to come. A call stores a few
// numbers and returns, without a lock and without a message, so a run can make a call for each item and for each block
// of data. Only the thread of the run calls these functions.
#pragma once

#include "ce/types.h"

// What the run does.
inline constexpr DWORD RunStores = 1;
inline constexpr DWORD RunRestores = 2;

// Reports that a run begins. `listPath` is the full path of its set's list file. `items` is the number of the run's
// items, and `bytes` is their total size. `bytes` doesn't include items of unknown size, and files can grow after they
// were measured. So the run can process more than `bytes` bytes.
void BeginRun(DWORD run, const WCHAR* listPath, DWORD items, std::uint64_t bytes);

// Reports how many bytes of the current item are done so far. A run calls this function only for items that take long.
void ReportItemBytes(std::uint64_t bytes);

// Reports that the first `bytes` bytes of the set's data file have been passed to the Linux system, and that the run
// won't change them. So the host can read them during the run.
void ReportStoredBytes(std::uint64_t bytes);

// Reports that the current item is done. `kind` is OutcomeFile and so on (ce/outcome.h). `bytes` is the size of the
// item as far as the run knows it. In a backup `made` is TRUE if the whole item is in the set, and in a restore if the
// whole item is on the device. It is FALSE after a failure, or if the user has chosen to keep the item that the device
// has.
void ReportItemDone(DWORD kind, std::uint64_t bytes, BOOL made);

// Corrects earlier reports: `count` items of this kind that were reported as made aren't made after all.
void TakeBackItemsMade(DWORD kind, DWORD count);

// Reports that the run has ended. What it made is on the disk, unless a flush has failed.
void EndRun();
