// thread_ahead.h - works on the next items on a second thread while the run's thread is at an earlier one.
//
// The run's thread offers items and gets them back in the same order. What belongs to a run stays on its thread: the
// order of the items, the lists, log, data and reports. The second thread only opens, reads, packs and closes sources,
// and asks whether one has changed, up to AheadItems - 1 items before their turn. Nothing on the device depends on how
// far it is.
//
// One walk at a time, and all calls on the run's thread. thread_ahead.cpp explains what the two threads share.
#pragma once

#include "kept_streams.h"

#include <atomic>

inline constexpr DWORD AheadItems = 256;

// The second thread is woken when so many items wait. Otherwise it would be woken for each. A test sets 1.
inline DWORD gAheadWakes = AheadItems / 2;

// What the run's thread knows of an item when it offers it.
struct AheadOffer {
    DWORD attributes = 0;  // as the listing found them
    std::uint64_t bytes = 0;
    bool packs = false;    // the listing packs the file
    KeptStream kept = {};  // what the listing has packed of it, for the run
};

struct AheadItem {
    std::atomic<bool> finished;
    WCHAR path[MAX_PATH];
    AheadOffer offer;
    DWORD error;       // of opening it, for the listing
    FileStamp source;  // of what was packed, for the listing
    SmallStream stream;
};

// The work on an item. Both threads do it, each with a memory of its own.
using AheadWork = void (*)(AheadItem& item, SmallStreamMemory& memory);

// Begins a walk with `work`. With a null one nothing is done ahead. `hasRoom` says whether an item may be begun ahead.
// Where no thread can be made, the run's thread does all.
void StartAhead(AheadWork work, bool (*hasRoom)());

// Stops the second thread and waits until it has ended. Items that are left are dropped.
void StopAhead();

bool IsAheadFull();
bool IsAheadEmpty();

// Offers the next item; there is room for it.
void OfferAhead(const WCHAR* path, const AheadOffer& offer);

// Returns the oldest item. If nobody has begun the work on it, that is left to the caller, and `finished` is false.
// Otherwise it waits until the work is finished, and works on items meanwhile that nobody has begun. The item is valid
// until the next OfferAhead.
AheadItem& TakeAhead();

// Does the work on an item that TakeAhead has returned unfinished.
void WorkOnTaken(AheadItem& item);
