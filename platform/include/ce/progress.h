// ce/progress.h - reports to the host how far a run, one backup or restore, has come. The host may show it.
//
// The program's own windows don't show the number of items and bytes that are still to come. A call stores a few
// numbers and returns, without a lock and without a message, so a run can make one for each item and for each block of
// data. The thread of the run only.
#pragma once

#include "ce/types.h"

// What the run does.
inline constexpr DWORD RunStores = 1;
inline constexpr DWORD RunRestores = 2;

// A run begins. `listPath` is the full path of its set's list file. `items` and `bytes` are what it has to do in all.
// `bytes` can lack items whose size isn't known, and files can have changed since, so the bytes done can exceed it.
void BeginRun(DWORD run, const WCHAR* listPath, DWORD items, std::uint64_t bytes);

// The bytes of the current item that are done so far. For items that take long; a run needn't call it.
void ReportItemBytes(std::uint64_t bytes);

// The first `bytes` bytes of the set's data file have been passed to the host, and the run won't change them. For a
// host that reads them during the run.
void ReportStoredBytes(std::uint64_t bytes);

// The current item is done. `kind` is OutcomeFile and so on (ce/outcome.h), `bytes` its size as far as the run knows
// it. `made`: it is whole in the set, or on the device. It isn't after a failure, or if the user keeps what the device
// has.
void ReportItemDone(DWORD kind, std::uint64_t bytes, BOOL made);

// `count` items of this kind that were reported as made aren't.
void TakeBackItemsMade(DWORD kind, DWORD count);

// The run has ended, and what it made is on the disk.
void EndRun();
