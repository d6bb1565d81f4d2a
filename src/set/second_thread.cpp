// The second thread reads `calls` before it looks for work. WakeSecondThread changes `calls` after the run's thread has
// made work available. So if the second thread hasn't found the new work, `calls` has changed since the second thread
// read it. In that case thread.calls.wait() returns at once.
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
    // `sleeps` is set to false at once. So a caller that checks `sleeps` doesn't wake the thread again before the
    // thread's next sleep.
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
