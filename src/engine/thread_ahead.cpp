// The items are a ring, and numbered from 0 on in the order in which they are offered.
//
//   gTaken <= gBegun <= gOffered <= gTaken + AheadItems
//
//   gTaken    the number of the oldest item. Only the run's thread reads and writes it.
//   gBegun    the first item that nobody has begun. Either thread begins it, by the compare-and-exchange that raises
//             gBegun. Until it has finished the item, it alone may touch it.
//   gOffered  the next number to offer. Only the run's thread writes it, after it has filled the item.
//   finished  set by the thread that worked on the item. After that the run's thread alone may touch it.
//
// These are sequentially consistent, so whoever reads a new number also sees the item that belongs to it.
//
// The second thread sleeps when no item is left to begin. It isn't woken for a few items: the run's thread begins
// whatever nobody has begun, so no item ever waits for it.
#include "thread_ahead.h"

#include "set/second_thread.h"

#include "ce/text.h"

namespace {

AheadItem gItems[AheadItems];
DWORD gTaken;
std::atomic<DWORD> gBegun;
std::atomic<DWORD> gOffered;

// Written while there is no second thread.
AheadWork gWork;
bool (*gHasRoom)();

SecondThread gThreadAhead;

SmallStreamMemory gRunMemory;
SmallStreamMemory gSecondMemory;

AheadItem& ItemOf(DWORD number)
{
    return gItems[number % AheadItems];
}

// False if there is nothing to begin.
bool Begin(DWORD& number)
{
    number = gBegun;
    while (number != gOffered) {
        if (gBegun.compare_exchange_weak(number, number + 1))
            return true;
    }
    return false;
}

void Finish(AheadItem& item)
{
    item.finished = true;
    item.finished.notify_one();
}

bool WorkOnNext(SmallStreamMemory& memory)
{
    DWORD number = 0;
    if (!gHasRoom() || !Begin(number))
        return false;
    gWork(ItemOf(number), memory);
    Finish(ItemOf(number));
    return true;
}

bool WorkAhead()
{
    return WorkOnNext(gSecondMemory);
}

// A thread that is just about to sleep can be overlooked here. Then the next call wakes it.
void WakeIfWorthwhile()
{
    if (gThreadAhead.sleeps && gOffered - gBegun >= gAheadWakes && gHasRoom())
        WakeSecondThread(gThreadAhead);
}

}  // namespace

void StartAhead(AheadWork work, bool (*hasRoom)())
{
    gTaken = 0;
    gBegun = gOffered = 0;
    gWork = work;
    gHasRoom = hasRoom;
    if (work)
        StartSecondThread(gThreadAhead, WorkAhead);
}

void StopAhead()
{
    StopSecondThread(gThreadAhead);
    for (; gTaken != gBegun; gTaken++)
        DropSmallStream(ItemOf(gTaken).stream);
}

bool IsAheadFull()
{
    return gOffered - gTaken == AheadItems;
}

bool IsAheadEmpty()
{
    return gOffered == gTaken;
}

void OfferAhead(const WCHAR* path, const AheadOffer& offer)
{
    AheadItem& item = ItemOf(gOffered);
    CopyText(item.path, path);
    item.offer = offer;
    item.error = ERROR_SUCCESS;
    item.stream.state = SmallStreamState::Left;
    item.finished = false;
    gOffered++;
    WakeIfWorthwhile();
}

AheadItem& TakeAhead()
{
    const DWORD oldest = gTaken++;
    AheadItem& item = ItemOf(oldest);
    DWORD expected = oldest;
    if (gBegun.compare_exchange_strong(expected, oldest + 1))
        return item;
    while (!item.finished) {
        if (!WorkOnNext(gRunMemory))
            item.finished.wait(false);
    }
    WakeIfWorthwhile();
    return item;
}

void WorkOnTaken(AheadItem& item)
{
    gWork(item, gRunMemory);
}
