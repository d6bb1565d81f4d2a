// The items form a ring. They are numbered from 0 on in the order in which they are offered.
//
//   gTaken <= gBegun <= gOffered <= gTaken + AheadItems
//
//   gTaken    the number of the oldest item. Only the run's thread reads and writes it.
//   gBegun    the number of the first item that no thread has begun. A thread begins this item by the
//             compare-and-exchange that raises gBegun. Only that thread may access the item until the item is finished.
//   gOffered  the next number to offer. Only the run's thread writes it, after it has filled the item.
//   finished  set by the thread that worked on the item. From then on only the run's thread may access the item.
//
// gBegun, gOffered and `finished` are atomic and sequentially consistent. So a thread that reads a new value of
// gOffered also sees the content of all items below it, and once `finished` is true, the run's thread sees the result
// of the work.
//
// The second thread sleeps when no item is left to begin, or when gHasRoom() returns false. It is woken only if
// gHasRoom() returns true and at least gAheadWakes items are left to begin. If the run's thread needs an item that no
// thread has begun, it begins this item itself. So it never has to wait for the second thread to wake.
#include "thread_ahead.h"

#include "set/second_thread.h"

#include "ce/text.h"

namespace {

AheadItem gItems[AheadItems];
DWORD gTaken;
std::atomic<DWORD> gBegun;
std::atomic<DWORD> gOffered;

// Only StartAhead sets gWork and gHasRoom, while no second thread runs. So they need no lock.
AheadWork gWork;
bool (*gHasRoom)();

SecondThread gThreadAhead;

SmallStreamMemory gRunMemory;
SmallStreamMemory gSecondMemory;

AheadItem& ItemOf(DWORD number)
{
    return gItems[number % AheadItems];
}

// Begins the next item and writes its number to `number`. Returns false if there is nothing to begin.
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

// Wakes the second thread if it sleeps and enough items wait for it. If the thread is about to sleep and hasn't set
// `sleeps` yet, this call doesn't wake it, but the next call does.
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
