#include "ce/thread.h"

#include "kernel/handle_table.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <system_error>
#include <thread>

namespace {

// The object of a thread's handle. It has no members, because closing the handle doesn't affect the thread.
class Thread final : public platform::kernel::Object {};

HANDLE fail(DWORD error)
{
    SetLastError(error);
    return nullptr;
}

}  // namespace

HANDLE CreateThread(const void* security, DWORD /*stackBytes*/, LPTHREAD_START_ROUTINE procedure, void* parameter,
                    DWORD flags, DWORD* id)
{
    static std::atomic<DWORD> lastId = 0;
    if (security != nullptr || procedure == nullptr || flags != 0)
        return fail(ERROR_INVALID_PARAMETER);

    // Create the handle and the id first, because after the start of the thread the call must not fail.
    const HANDLE handle = platform::kernel::addHandle(std::make_shared<Thread>());
    if (id != nullptr)
        *id = ++lastId;
    try {
        std::thread([procedure, parameter] { (void)procedure(parameter); }).detach();
    } catch (const std::system_error&) {
        (void)platform::kernel::removeHandle(handle);
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return handle;
}

void Sleep(DWORD milliseconds)
{
    if (milliseconds == 0)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
