// The second thread reads `calls` before it looks for work, and WakeSecondThread changes `calls` after the work is
// there. So if the thread has overlooked the work, its wait for another value of `calls` returns at once.
#include "set/second_thread.h"

#include "ce/handle.h"
#include "ce/thread.h"

namespace {

DWORD RunSecondThread(void* context)
{
    SecondThread& thread = *static_cast<SecondThread*>(context);
    while (!thread.stopping) {
        const DWORD calls = thread.calls;
        if (thread.work())
            continue;
        thread.sleeps = true;
        if (!thread.stopping)
            thread.calls.wait(calls);
        thread.sleeps = false;
    }
    thread.runs = false;
    thread.runs.notify_one();
    return 0;
}

}  // namespace

void StartSecondThread(SecondThread& thread, bool (*work)())
{
    thread.work = work;
    thread.stopping = thread.sleeps = false;
    thread.runs = true;
    const HANDLE handle = CreateThread(nullptr, 0, RunSecondThread, &thread, 0, nullptr);
    if (handle)
        CloseHandle(handle);
    else
        thread.runs = false;
}

void WakeSecondThread(SecondThread& thread)
{
    // The thread counts as awake at once, so that it isn't woken again before it sleeps the next time.
    thread.sleeps = false;
    thread.calls++;
    thread.calls.notify_one();
}

void StopSecondThread(SecondThread& thread)
{
    thread.stopping = true;
    WakeSecondThread(thread);
    thread.runs.wait(true);
}
