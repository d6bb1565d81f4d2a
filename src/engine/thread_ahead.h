// thread_ahead.h - works on the next items on a second thread, the thread ahead, while the run's thread works on an
// earlier item. A backup uses the thread ahead when it lists the files (full_backup.cpp), and again when it stores the
// files (backup_items.cpp).
//
// The run's thread offers items and takes them back in the same order. Only the run's thread changes the lists, writes
// the log and the data, and makes the reports. The second thread only opens, reads, packs and closes sources, and tests
// whether a source has changed. It can be ahead of the run's thread by up to AheadItems - 1 items. How far it is ahead
// has no effect on what is written to the device.
//
// The work on a sequence of items begins with StartAhead and ends with StopAhead. Only one sequence at a time is
// possible. All calls are made on the run's thread. thread_ahead.cpp explains which data the two threads share.
#pragma once

#include "kept_streams.h"

#include <atomic>

inline constexpr DWORD AheadItems = 256;

// The second thread is woken when there are at least this many offered items that no thread has begun. A test sets 1,
// so that the thread is woken for each item.
inline DWORD gAheadWakes = AheadItems / 2;

// Data that the caller of OfferAhead passes with the path of an item.
struct AheadOffer {
    DWORD attributes = 0;     // while files are listed: those that the search of the folder returned
    std::uint64_t bytes = 0;  // while files are listed: the size of the file
    bool packs = false;       // while files are listed: the file is to be packed
    KeptStream kept = {};     // while files are stored: the stream that was packed and kept earlier
};

struct AheadItem {
    std::atomic<bool> finished;
    WCHAR path[MAX_PATH];
    AheadOffer offer;
    DWORD error;       // while files are listed: the error of opening the file
    FileStamp source;  // while files are listed: the stamp of the file that was packed
    SmallStream stream;
};

// The function that works on an item. Both threads call it, each with its own memory.
using AheadWork = void (*)(AheadItem& item, SmallStreamMemory& memory);

// Begins the work on a sequence of items. A thread that begins an item in advance calls `work` for it. WorkOnTaken
// calls `work`, too. If `work` is null, nothing is done in advance. `hasRoom` returns whether a thread may begin an
// item in advance. If no thread can be made, the run's thread does all the work.
void StartAhead(AheadWork work, bool (*hasRoom)());

// Stops the second thread and waits until it has ended. Drops the items that weren't taken.
void StopAhead();

bool IsAheadFull();
bool IsAheadEmpty();

// Offers the next item. There must be room for it (IsAheadFull).
void OfferAhead(const WCHAR* path, const AheadOffer& offer);

// Returns the oldest item. If no thread has begun the work on it, TakeAhead returns at once with `finished` false, and
// the caller must do the work. Otherwise TakeAhead returns when the work is finished. While it waits, it works on items
// that no thread has begun. The returned item is valid until the next OfferAhead.
AheadItem& TakeAhead();

// Does the work on an item that TakeAhead has returned unfinished.
void WorkOnTaken(AheadItem& item);
